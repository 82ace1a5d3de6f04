#pragma once

#include "zorvaccelerate/Fourier.h"

#include <vector>

namespace zorvaccelerate::utility
{

// The operations of Fourier.h compiled for one level of processors.
struct FourierVariant
{
	char const* mName;
	void (*mForward)(FourierPlan const&, float*);
	void (*mInverse)(FourierPlan const&, float*);
};

// Those that this processor can run, the plainest first. The last one is in use.
ZORV_API std::vector<FourierVariant> RunnableFourierVariants();

} // namespace zorvaccelerate::utility
