#pragma once

#include "Time/Resampler/ResamplerBase.h"

#include <vector>

namespace SN
{

// The frame of the resamplers that draw a curve through a few neighbouring samples.
//
// Position  The read position is counted from the first sample of the coming block, and negative while
//           it still lies in the block before. The last samples of that block stay in the history.
// Step      The ratio of the rates, rounded to single precision: part of where outputs fall.
// Silence   A block that is silent in all channels is not worked out: the output is flagged, and history
//           and position start anew. A channel that alone is silent is flagged in the output.
class InterpolatingResampler : public ResamplerBase
{
public:
	void Init(FrameRate const& inInputRate, FrameRate const& inOutputRate, unsigned inNumChannels,
		bool inHighQuality) final;
	void Reset() final;
	bool SupportsFrameRateChange() final { return true; }
	void SetFrameRates(FrameRate const& inInputRate, FrameRate const& inOutputRate) final;
	unsigned GetOutputSampleCount(unsigned inNumInput) final;
	void Process(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, unsigned inNumInput,
		unsigned inNumOutput) final;

protected:
	// What sets the two curves apart.
	struct Shape
	{
		unsigned mHistoryRows;
		// The curve at a position needs no history from this index on, and so many samples above it.
		double mFirstIndex;
		double mSamplesAhead;
		// The history is renewed if the position in the coming block is below this.
		double mHistoryEnd;
		// Whether a silent block of no samples counts as silence.
		bool mSkipsEmptyBlocks;
		// Whether the flags of input channels beyond the resampler's own are passed on too.
		bool mFlagsAllChannels;
	};

	explicit InterpolatingResampler(Shape const& inShape)
		: mShape(inShape)
	{
	}

	// One channel of a block as the curve sees it.
	class Channel
	{
	public:
		Channel(
			float const* inSamples, unsigned inCapacity, float const* inHistory, unsigned long long inStride)
			: mSamples(inSamples),
			  mCapacity(inCapacity),
			  mHistory(inHistory),
			  mStride(inStride)
		{
		}
		float const* GetSamples() const { return mSamples; }
		// Zero beyond the memory.
		float Sample(double inIndex) const
		{
			return inIndex < mCapacity ? mSamples[static_cast<unsigned>(inIndex)] : 0.0f;
		}
		// The sample inRow + 1 places before the block.
		float History(unsigned inRow) const { return mHistory[inRow * mStride]; }

	private:
		float const* mSamples;
		unsigned mCapacity;
		float const* mHistory;
		unsigned long long mStride;
	};

	// The curve anywhere.
	virtual float InterpolateAt(Channel const& inChannel, double inPosition) const = 0;
	// The curve at positions that need no history and no sample beyond the memory.
	virtual void InterpolateInside(
		unsigned inCount, double const* inPositions, float const* inSamples, float* outSamples) const = 0;
	// Brings the history of a channel up to date after a block of inNumInput samples. Row k stands at
	// ioHistory[k * inStride].
	virtual void RenewHistory(Channel const& inChannel, unsigned inNumInput, float* ioHistory,
		unsigned long long inStride) const = 0;

	double mIncrement = 0.0;
	double mPhase = 0.0;

private:
	// Positions that are worked out for all channels at once.
	static constexpr unsigned kPositionsAtOnce = 256;

	Channel GetChannel(dsp::AudioBuffer const& inInput, unsigned long long inChannel) const;
	void InterpolateBlock(unsigned inCount, double const* inPositions, Channel const& inChannel,
		unsigned inCapacity, float* outSamples) const;
	void FlagOutput(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
		unsigned long long inChannels, unsigned inNumOutput) const;

	Shape const mShape;
	std::vector<float> mHistory;
	std::vector<float const*> mInputPointers;
};

} // namespace SN
