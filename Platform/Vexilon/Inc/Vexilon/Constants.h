#pragma once

namespace VX
{

inline constexpr float kPi = 3.14159265358979323846f;

// Half the square root of two, in 64 bits.
inline constexpr double kSqrt2Over264 = 0.70710678118654752440;

} // namespace VX
