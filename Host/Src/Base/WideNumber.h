#pragma once

namespace SonaroHost
{

// Products of two 64-bit numbers.
__extension__ using Wide = __int128;

// The quotient's floor; inB is above 0.
constexpr Wide FloorDivide(Wide inA, Wide inB)
{
	Wide const quotient = inA / inB;
	return quotient * inB > inA ? quotient - 1 : quotient;
}

} // namespace SonaroHost
