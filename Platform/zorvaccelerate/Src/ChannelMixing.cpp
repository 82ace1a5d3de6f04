#include "zorvaccelerate/ChannelMixing.h"

#include "ProcessorLevel.h"
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

#if defined(__clang__)
#define KERNEL_LOOP _Pragma("clang loop vectorize(assume_safety)")
#else
#define KERNEL_LOOP _Pragma("GCC ivdep")
#endif

#define VARIANT_NAMESPACE Baseline
#define VARIANT_NAME "baseline"
#define VARIANT_TARGET
#include "ChannelKernels.inc"

#if defined(__x86_64__)

#define VARIANT_NAMESPACE Level3
#define VARIANT_NAME "x86-64-v3"
#define VARIANT_TARGET __attribute__((target("arch=x86-64-v3")))
#include "ChannelKernels.inc"

#define VARIANT_NAMESPACE Level4
#define VARIANT_NAME "x86-64-v4"
#define VARIANT_TARGET __attribute__((target("arch=x86-64-v4")))
#include "ChannelKernels.inc"

#endif

namespace zorvaccelerate::utility
{

namespace
{

// The variant in use: the baseline for static objects that are made before this library's own, then the
// best one.
constinit ChannelVariant const* sVariant = &Baseline::kVariant;

[[maybe_unused]] bool const sIsChosen = []
{
#if defined(__x86_64__)
	ProcessorLevel const level = GetProcessorLevel();
	sVariant = level == ProcessorLevel::kLevel4   ? &Level4::kVariant
			   : level == ProcessorLevel::kLevel3 ? &Level3::kVariant
												  : &Baseline::kVariant;
#endif
	return true;
}();

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
	std::vector<ChannelVariant> variants{Baseline::kVariant};
#if defined(__x86_64__)
	ProcessorLevel const level = GetProcessorLevel();
	if (level >= ProcessorLevel::kLevel3)
	{
		variants.push_back(Level3::kVariant);
	}
	if (level >= ProcessorLevel::kLevel4)
	{
		variants.push_back(Level4::kVariant);
	}
#endif
	return variants;
}

void FoldChannels(ChannelFold inFold, unsigned inCount, float const* const* inInputs,
	FoldGains const& inGains, float* const* outOutputs)
{
	sVariant->mFolds[static_cast<unsigned>(inFold)](inCount, inInputs, inGains, outOutputs);
}

void WeightedSum(unsigned inCount, unsigned inNumInputs, float const* const* inInputs, float const* inGains,
	float* outOutput)
{
	if (inNumInputs == 0)
	{
		Zero(inCount, outOutput);
		return;
	}
	sVariant->mWeightedSum(inCount, inNumInputs, inInputs, inGains, outOutput);
}

void MulConstantAdd(unsigned inCount, float const* inInput, float inFactor, float* ioOutput)
{
	sVariant->mMulConstantAdd(inCount, inInput, inFactor, ioOutput);
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
			sVariant->mFeedTwo(inCount, ioFeed, inFactor, outOutput);
		}
		else
		{
			sVariant->mFeedOne(inCount, ioFeed.mFirst, inFactor, outOutput);
		}
		x1 = GetFeed(ioFeed, inCount - 1);
		x2 = GetFeed(ioFeed, inCount - 2);
	}
	ioFeed.mX1 = x1;
	ioFeed.mX2 = x2;
}

} // namespace zorvaccelerate::utility
