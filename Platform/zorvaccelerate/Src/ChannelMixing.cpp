#include "zorvaccelerate/ChannelMixing.h"

#include "zorvaccelerate/ChannelVariants.h"
#include "zorvaccelerate/VectorArithmetic.h"

#include <algorithm>

namespace zorvaccelerate::utility
{

namespace
{

// The channels of 5.1 by name.
struct Surround
{
	explicit Surround(float const* const* inInputs)
		: mLeft(inInputs[0]),
		  mRight(inInputs[1]),
		  mCenter(inInputs[2]),
		  mLowFrequency(inInputs[3]),
		  mLeftSurround(inInputs[4]),
		  mRightSurround(inInputs[5])
	{
	}

	float const* mLeft;
	float const* mRight;
	float const* mCenter;
	float const* mLowFrequency;
	float const* mLeftSurround;
	float const* mRightSurround;
};

} // namespace

} // namespace zorvaccelerate::utility

#define KERNEL_FILE "ChannelKernels.inc"
#include "CompileForEachLevel.inc"

namespace zorvaccelerate::utility
{

namespace
{

// Sample i of the filter's input.
float GetFeed(FilterFeed const& inFeed, unsigned inIndex)
{
	return inFeed.mSecond
			   ? inFeed.mFirst[inIndex] * inFeed.mFirstGain + inFeed.mSecond[inIndex] * inFeed.mSecondGain
			   : inFeed.mFirst[inIndex];
}

} // namespace

std::vector<ChannelVariant> RunnableChannelVariants()
{
	return sChoice.GetRunnable();
}

void FoldChannels(ChannelFold inFold, unsigned inCount, float const* const* inInputs,
	FoldGains const& inGains, float* const* outOutputs)
{
	sChoice->mFolds[static_cast<unsigned>(inFold)](inCount, inInputs, inGains, outOutputs);
}

void WeightedSum(unsigned inCount, unsigned inNumInputs, float const* const* inInputs, float const* inGains,
	float* outOutput)
{
	if (inNumInputs == 0)
	{
		Zero(inCount, outOutput);
		return;
	}
	sChoice->mWeightedSum(inCount, inNumInputs, inInputs, inGains, outOutput);
}

void MulConstantAdd(unsigned inCount, float const* inInput, float inFactor, float* ioOutput)
{
	sChoice->mMulConstantAdd(inCount, inInput, inFactor, ioOutput);
}

void FeedFilter(unsigned inCount, FilterFeed& ioFeed, float inFactor, float* outOutput)
{
	float x1 = ioFeed.mX1;
	float x2 = ioFeed.mX2;
	for (unsigned i = 0; i < std::min(inCount, 2u); ++i)
	{
		float const x0 = GetFeed(ioFeed, i);
		outOutput[i] = (2.0f * x1 + x0 + x2) * inFactor;
		x2 = x1;
		x1 = x0;
	}
	if (inCount > 2)
	{
		if (ioFeed.mSecond)
		{
			sChoice->mFeedTwo(inCount, ioFeed, inFactor, outOutput);
		}
		else
		{
			sChoice->mFeedOne(inCount, ioFeed.mFirst, inFactor, outOutput);
		}
		x1 = GetFeed(ioFeed, inCount - 1);
		x2 = GetFeed(ioFeed, inCount - 2);
	}
	ioFeed.mX1 = x1;
	ioFeed.mX2 = x2;
}

} // namespace zorvaccelerate::utility
