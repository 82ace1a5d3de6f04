#pragma once

#include "zorvaudiodsp/FFT.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace dsp::stretch::omega
{

class SampleHistory;

// Plays steady sound from any place of the source on, with the phase of each of its notes continued.
//
// Frames  Of 100 to 200 milliseconds, four at a time. A frame is the source around a place, with the phase of all that
//         lies around a peak of its spectrum turned by the same angle: by which the peak, a hop earlier in the source,
//         has the phase that the last frame gave it (Puckette, "Phase-locked vocoder", 1995; Laroche and Dolson,
//         "Improved phase vocoder time-scale modification of audio", 1999). Angles come from the weighted sum of all
//         channels, so that phases between channels stay.
// Sound   Where nothing changes, notes keep their frequency exactly. Onsets would be smeared over a frame.
// Memory  Init alone allocates.
class PhaseVocoder
{
public:
	// Frames that are heard at a time.
	static constexpr unsigned kOverlap = 4;

	// inWeights: those of the channels in the sum.
	void Init(double inSampleRate, std::vector<float> const& inWeights);

	unsigned GetFrameSize() const { return mFrameSize; }
	// Frames are so many samples apart, a quarter of their size.
	unsigned GetHop() const { return mFrameSize / kOverlap; }

	// What was played so far: the weighted sum of a frame whose middle lies a hop after the start.
	void Begin(float const* inSound);
	// Adds the frame that begins here, a hop after the last one, with its middle at inPlace of the source. False, with
	// nothing added, where the sound has changed since the last frame or changes within this one. inSound: the
	// weighted sum of the source, which is read from a hop before the frame on.
	bool AddFrame(SampleHistory const& inSource, SampleHistory const& inSound, std::int64_t inPlace);
	// Goes on by a hop.
	void Advance();

	// What all frames so far add up to, for a frame's size from the start of the present hop on, and what their weights
	// add up to: 1 in this hop once there are four frames, less otherwise.
	float const* GetSamples(unsigned inChannel) const { return mOutput.data() + inChannel * mFrameSize; }
	float const* GetCoverage() const { return mCoverage.data(); }

private:
	// Bins of a spectrum from the first to before the end turn by one angle.
	struct Region
	{
		unsigned mFirst;
		unsigned mPeak;
		unsigned mEnd;
	};

	void Analyse(float const* inSamples, float* outSpectrum);
	void SumSpectra();
	void MeasurePowers(std::vector<float> const& inSpectrum, std::vector<float>& outPowers) const;
	double MeasureChange(std::vector<float> const& inFirst, std::vector<float> const& inSecond) const;
	bool IsPeak(unsigned inBin, float inFloor) const;
	void FindAngles();
	void SetAngle(Region const& inRegion);
	void Turn(float* ioSpectrum) const;
	void Synthesise(unsigned inChannel);

	unsigned mFrameSize = 0;
	std::optional<FFT> mTransform;
	std::vector<float> mWeights;
	std::vector<float> mAnalysisWindow;
	// With the scale that makes the weights of four frames 1.
	std::vector<float> mSynthesisWindow;
	// By channel, of the frame at hand.
	std::vector<float> mSpectra;
	// Of the sum: the frame at hand, the one a hop earlier in the source, and the last one as it was played.
	std::vector<float> mSum;
	std::vector<float> mEarlier;
	std::vector<float> mLast;
	// Powers of these.
	std::vector<float> mPowers;
	std::vector<float> mEarlierPowers;
	std::vector<float> mLastPowers;
	// The turn of each bin, a number of absolute value 1.
	std::vector<float> mCosines;
	std::vector<float> mSines;
	std::vector<float> mOutput;
	std::vector<float> mCoverage;
};

} // namespace dsp::stretch::omega
