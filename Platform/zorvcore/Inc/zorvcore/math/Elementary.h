#pragma once

#include "zorvcore/Export.h"

// Elementary functions whose results are the same bits with every compiler, on every processor and on every system, which
// those of the C library are not. They are made of additions, multiplications and divisions in double precision alone.
//
// Error    Below 0.52 units in the last place, that of Tan below 3, within the ranges below; single precision is worked
//          out in double precision and rounded. Most results are therefore the nearest numbers there are.
// Special  Not-a-number and infinity, overflow and underflow as in the C library, without errno.
// Threads  Any; nothing allocates, waits or locks.
namespace zorvcore::math
{

// inAngle: in radians. Beyond 100,000 the turn is taken as twice the number nearest to pi, and results are less exact.
ZORV_API double Sin(double inAngle) noexcept;
ZORV_API double Cos(double inAngle) noexcept;
ZORV_API double Tan(double inAngle) noexcept;
ZORV_API float Sin(float inAngle) noexcept;
ZORV_API float Cos(float inAngle) noexcept;

// Powers of e, 2 and 10.
ZORV_API double Exp(double inExponent) noexcept;
ZORV_API double Exp2(double inExponent) noexcept;
ZORV_API double Exp10(double inExponent) noexcept;
// inBase: 0 or above; otherwise not a number.
ZORV_API double Pow(double inBase, double inExponent) noexcept;
ZORV_API float Pow(float inBase, float inExponent) noexcept;

// To the bases e and 10: minus infinity for 0, not a number below it.
ZORV_API double Log(double inValue) noexcept;
ZORV_API double Log10(double inValue) noexcept;
ZORV_API float Log(float inValue) noexcept;

} // namespace zorvcore::math
