#pragma once

#include "zorvaccelerate/ChannelMixing.h"

#include <vector>

namespace zorvaccelerate::utility
{

// The operations of ChannelMixing.h compiled for one level of processors.
struct ChannelVariant
{
	char const* mName;
	// The folds, by ChannelFold.
	void (*mFolds[kNumChannelFolds])(unsigned, float const* const*, FoldGains const&, float* const*);
	// Takes at least one input.
	void (*mWeightedSum)(unsigned, unsigned, float const* const*, float const*, float*);
	void (*mMulConstantAdd)(unsigned, float const*, float, float*);
	// FeedFilter from the third sample on, for one channel and for two.
	void (*mFeedOne)(unsigned, float const*, float, float*);
	void (*mFeedTwo)(unsigned, FilterFeed const&, float, float*);
};

// Those that this processor can run, the plainest first. The last one is in use.
ZORV_API std::vector<ChannelVariant> RunnableChannelVariants();

} // namespace zorvaccelerate::utility
