#pragma once

#include "Time/Resampler/ResamplerBase.h"
#include "Time/Resampler/SincFilter.h"
#include "zorvaccelerate/Resampling.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <array>
#include <memory>
#include <vector>

namespace SN
{

// A windowed-sinc filter at a ratio that is fixed by Init. Output k stands at input position
// k * ratio + 1.
//
// Ring      Each channel's input goes through a ring, refilled by half its size at a time from an input
//           block that must hold what GetInputSampleCount asked for.
// Priming   The first block after Init fills the ring; its GetInputSampleCount asks for more.
// Surplus   What a block makes beyond the outputs that were asked for comes first in the next block. A
//           block in which the surplus suffices reads no input.
// Ratio     0.04 to 100 input samples an output; outside of that the output is silence.
// Reset     Makes GetInputSampleCount ask for the first block's amount again and forgets no audio: Init
//           starts anew.
class AudioResamplerSinc final : public ResamplerBase
{
public:
	void Init(FrameRate const& inInputRate, FrameRate const& inOutputRate, unsigned inNumChannels,
		bool inHighQuality) override;
	void Reset() override;
	bool SupportsFrameRateChange() SONARO_NONBLOCKING override { return false; }
	void SetFrameRates(FrameRate const&, FrameRate const&) SONARO_NONBLOCKING override {}
	// Multiplies by the same ratio as GetInputSampleCount does.
	unsigned GetOutputSampleCount(unsigned inNumInput) SONARO_NONBLOCKING override;
	unsigned GetInputSampleCount(unsigned inNumOutput) SONARO_NONBLOCKING override;
	void Process(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, unsigned inNumInput,
		unsigned inNumOutput) SONARO_NONBLOCKING override;

private:
	// Outputs that are worked out together.
	static constexpr unsigned kBatch = zorvaccelerate::utility::kFilterOutputs;

	// One output: the first sample in the ring that it takes, and the row of the filter. Between that row
	// and the one before lies mFraction, unused where all steps are whole.
	struct Position
	{
		unsigned mFirst;
		int mRow;
		float mFraction;
	};

	// The block that Process works on.
	struct Block
	{
		dsp::AudioBuffer const& mInput;
		dsp::AudioBuffer& mOutput;
		unsigned mNumInput;
		unsigned mNumOutput;
		unsigned mInputCursor = 0;
		unsigned mProduced = 0;
	};

	void SizeRing();
	void Prime(Block& ioBlock);
	// False when the surplus was enough for the whole block.
	bool TakeSurplus(Block& ioBlock);
	void MakeSamples(Block& ioBlock);
	void AddPosition();
	void Advance(Block& ioBlock);
	void StepInput(Block& ioBlock);
	void Refill(Block& ioBlock);
	void FlushBatch(Block& ioBlock);
	void InterpolateCoefficients();
	void FilterBatch(unsigned long long inChannel, float* outSamples) const;
	void Finish(Block& ioBlock) const;

	// So many input samples of all channels into the ring, zeros beyond the memory of the input. Moves the
	// cursor.
	void CopyToRing(Block& ioBlock, unsigned inRingIndex, unsigned inCount);

	// Null until Init, and at a ratio that is out of range.
	std::shared_ptr<SincFilter const> mFilter;
	double mRatio = 0.0;
	bool mStepsAreWhole = false;
	float mPhase = 0.0f;
	int mIntPhase = 0;

	// mRingSize samples, and the first mNumTaps of them once more, so that the taps of an output never
	// wrap around.
	dsp::AudioBuffer mDelayLine;
	unsigned mRingSize = 0;
	unsigned mWriteIndex = 0;
	unsigned mCentreIndex = 0;
	unsigned mRefillThreshold = 0;
	unsigned mRefillBlock = 0;
	bool mIsPriming = true;
	// Input samples that outputs have moved past, and that they may move past; they wrap around.
	unsigned mConsumedCount = 0;
	unsigned mAvailableCount = 0;

	dsp::AudioBuffer mOverflow;
	unsigned mOverflowCount = 0;
	std::vector<float const*> mInputPointers;

	std::array<Position, kBatch> mPositions{};
	unsigned mNumPositions = 0;
	// The batch's coefficients, mNumTaps for each output, where a step is not whole.
	std::vector<double> mCoefficients;

	bool mIsFirstBlock = true;
	bool mIsOutOfRange = false;
};

} // namespace SN
