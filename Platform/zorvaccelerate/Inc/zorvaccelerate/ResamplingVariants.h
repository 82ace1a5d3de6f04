#pragma once

#include "zorvaccelerate/Resampling.h"

#include <vector>

namespace zorvaccelerate::utility
{

// The operations of Resampling.h compiled for one level of processors.
struct ResamplingVariant
{
	char const* mName;
	void (*mInterpolateCoefficients)(unsigned, float const*, float const*, float, double*);
	void (*mFilterDouble)(unsigned, double const* const*, float const* const*, float*);
	void (*mFilterSingle)(unsigned, float const* const*, float const* const*, float*);
	void (*mInterpolateLinear)(unsigned, double const*, float const*, float*);
	void (*mInterpolateCubic)(unsigned, double const*, float const*, unsigned, float const*, float*);
	void (*mFilterPlaces)(unsigned, FilterPlace const*, unsigned, float const*, float const*, float*);
	void (*mFilterBetweenRows)(unsigned, FilterPlace const*, unsigned, float const*, float const*, float*);
};

// Those that this processor can run, the plainest first. The last one is in use.
ZORV_API std::vector<ResamplingVariant> RunnableResamplingVariants();

} // namespace zorvaccelerate::utility
