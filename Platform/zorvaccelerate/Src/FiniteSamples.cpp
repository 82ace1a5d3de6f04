#include "zorvaccelerate/FiniteSamples.h"

#include "zorvaccelerate/FiniteVariants.h"

#include <bit>
#include <cstdint>

#define KERNEL_FILE "FiniteKernels.inc"
#include "CompileForEachLevel.inc"

namespace zorvaccelerate::utility
{

std::vector<FiniteVariant> RunnableFiniteVariants()
{
	return sChoice.GetRunnable();
}

bool AreFinite(unsigned inCount, float const* inInput)
{
	return sChoice->mAreFinite(inCount, inInput);
}

bool CopyAndTestFinite(unsigned inCount, float const* inInput, float* outOutput)
{
	return sChoice->mCopyAndTest(inCount, inInput, outOutput);
}

} // namespace zorvaccelerate::utility
