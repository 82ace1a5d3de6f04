#pragma once

#include "zorvcore/Export.h"

// Stamps of a clock that only goes forward, for measuring spans.
namespace zorvcore::utility::HighPrecisionTime
{

// Now; never 0, so that 0 can stand for "no stamp".
ZORV_API unsigned long long GetCurrentTimeStamp() noexcept;

// A stamp in nanoseconds from the clock's own origin; signed, so that the difference of two shows which came first.
ZORV_API long long ConvertToNanos(unsigned long long inStamp) noexcept;

} // namespace zorvcore::utility::HighPrecisionTime
