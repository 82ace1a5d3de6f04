#pragma once

#include "zorvaccelerate/VectorArithmetic.h"

#include <vector>

namespace zorvaccelerate::utility
{

// The operations of VectorArithmetic.h compiled for one level of processors.
struct VectorVariant
{
	char const* mName;
	void (*mAdd)(unsigned, float const*, float const*, float*);
	void (*mMulConstant)(unsigned, float const*, float, float*);
	void (*mReverse)(unsigned, float*);
	void (*mMulRamp)(unsigned, float const*, LinearRamp const&, unsigned, float*);
	float (*mFindPeak)(unsigned, float const*);
	void (*mConvertInt32ToFloat32)(unsigned, void*);
	void (*mMulTwoConstants)(unsigned, float const*, float, float, float*);
	void (*mConvolve)(unsigned, float const*, unsigned, float const*, float*);
};

// Those that this processor can run, the plainest first. The last one is in use.
ZORV_API std::vector<VectorVariant> RunnableVariants();

} // namespace zorvaccelerate::utility
