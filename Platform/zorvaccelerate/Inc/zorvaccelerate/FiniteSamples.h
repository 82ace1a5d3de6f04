#pragma once

#include "zorvcore/Export.h"

// Looks for samples that are infinite or not a number, in the fastest form that the processor has. Pointers need no
// alignment; with a count of 0 they are not looked at. Any thread.
namespace zorvaccelerate::utility
{

// Whether all are finite.
ZORV_API bool AreFinite(unsigned inCount, float const* inInput);
// The same; copies them all, bit for bit. The output overlaps no input.
ZORV_API bool CopyAndTestFinite(unsigned inCount, float const* inInput, float* outOutput);

} // namespace zorvaccelerate::utility
