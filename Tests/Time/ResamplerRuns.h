#pragma once

#include "Sonaro/IAudioResampler.h"

#include <cstddef>
#include <functional>
#include <vector>

namespace SN::Testing
{

using Signal = std::vector<float>;

enum class ResamplerKind
{
	kLinear,
	kCubic,
	kSinc,
	kSincHighQuality,
};
inline constexpr ResamplerKind kAllResamplers[] = {
	ResamplerKind::kLinear, ResamplerKind::kCubic, ResamplerKind::kSinc, ResamplerKind::kSincHighQuality};
char const* GetName(ResamplerKind inKind);

struct RatePair
{
	// The rates 1 and inRatio.
	explicit RatePair(double inRatio);
	RatePair(unsigned inInputRate, unsigned inOutputRate);

	double GetRatio() const { return mInput.GetSamplesPerSecond() / mOutput.GetSamplesPerSecond(); }

	FrameRate mInput;
	FrameRate mOutput;
};

InterfaceRef<IAudioResampler> MakeResampler(
	ResamplerKind inKind, RatePair const& inRates, unsigned inNumChannels = 1);

// Pulls inNumOutput samples of one channel out of the resampler, in blocks of inBlock, as much input at a
// time as the resampler asks for. The input goes on in zeros.
Signal PullThrough(
	IAudioResampler& ioResampler, Signal const& inInput, unsigned inNumOutput, unsigned inBlock = 512);
// The same of several channels.
std::vector<Signal> PullChannelsThrough(IAudioResampler& ioResampler, std::vector<Signal> const& inInputs,
	unsigned inNumOutput, unsigned inBlock = 512);

// A tone of so many cycles a sample, from sample 0 on.
Signal MakeTone(double inFrequency, unsigned inCount);

// The tone that comes nearest to what was measured.
struct ToneFit
{
	double mGain;
	// In radians, ahead of the tone that was expected.
	double mPhase;
	// Its power over that of the rest, in dB.
	double mSignalToNoise;
};
// inMeasured should be the tone of so many cycles a sample, at the positions inFirst + k * inStep.
ToneFit FitTone(Signal const& inMeasured, double inFrequency, double inFirst, double inStep);
// The same for a wave that has the angle inAngle(k) in sample k, in radians.
ToneFit FitWave(Signal const& inMeasured, std::function<double(std::size_t)> const& inAngle);

// The mean power over that of a tone of full scale, in dB.
double MeasureLevel(Signal const& inSamples);

} // namespace SN::Testing
