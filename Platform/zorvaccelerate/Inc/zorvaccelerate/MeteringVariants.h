#pragma once

#include "zorvaccelerate/Metering.h"

#include <vector>

namespace zorvaccelerate::utility
{

// The operations of Metering.h compiled for one level of processors.
struct MeteringVariant
{
	char const* mName;
	float (*mCopyPlausible)(unsigned, float const*, float*);
	void (*mFilterLanes)(unsigned, unsigned, float const* const*, LaneFilter const&, LaneStates&, float*);
	float (*mFindInterpolatedPeak)(unsigned, float const*, InterpolationTaps const&, float);
};

// Those that this processor can run, the plainest first. The last one is in use.
ZORV_API std::vector<MeteringVariant> RunnableMeteringVariants();

} // namespace zorvaccelerate::utility
