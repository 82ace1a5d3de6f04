#pragma once

#include "stretch/omega/SampleHistory.h"
#include "zorvaudiodsp/stretch/omega/OmegaEngine.h"

#include <rubberband/RubberBandStretcher.h>

#include <array>
#include <vector>

namespace dsp::stretch::omega
{

// The R3 engine of the Rubber Band Library in its real-time mode. What the library asks for comes at its own pace and in
// steps; a queue in between, which the source fills at the pace of the ratio, makes the counts exact. What the library's
// rounding of steps would add up to is taken back by slight changes of the ratio.
class RubberBandEngine final : public OmegaEngine
{
public:
	RubberBandEngine(
		double inSampleRate, unsigned inNumChannels, unsigned inBlockSize, OmegaLimits const& inLimits);

	void SetRatio(float inStartRatio, float inEndRatio) override;
	void SetPitch(float inStartSemitones, float inEndSemitones) override;
	unsigned GetOutputLimit() const override { return mBlockSize; }
	unsigned GetInputForBlock(unsigned inBlockSize, float inRatio) const override;
	unsigned GetInputNeeded(unsigned inNumOutput) const override;
	void Begin(float inSampleRate, StreamSettings const* inSettings, unsigned inNumInput) override;
	void SetSourceRemaining(unsigned inNumInput) override;
	void Process(unsigned inNumOutput, float const* const* inInputs, float* const* outOutputs) override;
	void End() override {}

private:
	static constexpr unsigned kStep = 512;

	double GetAdvance() const { return 1.0 / static_cast<double>(mRatio); }
	double GetSourceAt(unsigned inNumOutput) const { return mSourceDone + inNumOutput * GetAdvance(); }
	void Start();
	bool FeedStep();
	void Retrieve(unsigned inCount, float* const* outOutputs);
	void Steer();

	double mSampleRate;
	unsigned mNumChannels;
	unsigned mBlockSize;
	OmegaLimits mLimits;
	unsigned mLookAhead;
	RubberBand::RubberBandStretcher mStretcher;
	float mRatio = 1.0f;
	float mSemitones = 0.0f;
	bool mIsStarted = false;
	// Where the source ought to be, and how much of it the library has got.
	double mSourceDone = 0.0;
	std::int64_t mFed = 0;
	// Of the library's longest window.
	std::size_t mHalfWindow = 0;
	// What is left of the output to be thrown away at the start.
	std::size_t mDelay = 0;
	SampleHistory mQueue;
	std::vector<float> mScratch;
	std::vector<float const*> mInputPointers;
	std::vector<float*> mOutputPointers;
};

} // namespace dsp::stretch::omega
