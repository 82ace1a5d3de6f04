#pragma once

#include "zorvaccelerate/FiniteSamples.h"

#include <vector>

namespace zorvaccelerate::utility
{

// The operations of FiniteSamples.h compiled for one level of processors.
struct FiniteVariant
{
	char const* mName;
	bool (*mAreFinite)(unsigned, float const*);
	bool (*mCopyAndTest)(unsigned, float const*, float*);
};

// Those that this processor can run, the plainest first. The last one is in use.
ZORV_API std::vector<FiniteVariant> RunnableFiniteVariants();

} // namespace zorvaccelerate::utility
