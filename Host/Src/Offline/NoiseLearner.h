#pragma once

#include "SonaroHost/Offline/Denoise.h"
#include "SonaroHost/Offline/NoiseProfile.h"
#include "SpectralGrid.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <vector>

namespace SonaroHost
{

// Gives frames of a recording from inFirst on, interleaved.
using FrameReader = std::function<void(float* outSamples, std::int64_t inFirst, unsigned inFrames)>;

// Learns the noise of a recording from what it is given of it, frames of a spectral grid that overlap by a half.
//
// Quietest  Stretches of four frames are sorted by their level into steps of a quarter of a decibel, those that are silent
//           left out. The level is the mean amplitude of all bins, in which weak ones have their say. Noise that is steady
//           has nearly the same level everywhere: of the quietest quarter of the stretches, the first three steps are
//           averaged that have at least half as many as any others. Fades at the ends of a recording are thus passed over.
// Memory    Does not grow with the recording.
class NoiseLearner
{
public:
	enum class Choice
	{
		kAll,
		kQuietest
	};

	NoiseLearner(SpectralGrid const& inGrid, unsigned inChannels, Choice inChoice);

	// Frames of the grid, one for each channel, one after the other.
	void Add(std::span<float const> inFrames);
	NoiseProfile Finish();

private:
	struct Sum
	{
		std::int64_t mFrames = 0;
		std::vector<double> mPower;

		void Add(Sum const& inOther);
	};

	void FinishStretch();
	// That of the stretch as a step, below 0 for silence.
	int FindLevel() const;
	// Of the averaged steps from this one on.
	std::int64_t CountFrames(int inLevel) const;
	// The first of the steps that are averaged.
	int FindSteadyLevel() const;

	SpectralGrid mGrid;
	unsigned mChannels;
	Choice mChoice;
	SpectralTransform mTransform;
	std::vector<float> mSpectrum;
	std::vector<float> mPower;
	std::vector<double> mSteps;
	Sum mStretch;
	// By level.
	std::map<int, Sum> mSums;
};

// Learns from a span of a recording. inGoesOn: called with the frames of the span that are done, now and then; null is
// returned when it returns false. Nothing is learned of a span that is shorter than a frame of the grid.
std::shared_ptr<NoiseProfile const> LearnNoise(int inSampleRate, unsigned inChannels,
	Denoise::Span const& inSpan, NoiseLearner::Choice inChoice, FrameReader const& inRead,
	std::function<bool(std::int64_t)> const& inGoesOn);

} // namespace SonaroHost
