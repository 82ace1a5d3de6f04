#pragma once

namespace zorvaccelerate::utility
{

// The passes of a complex transform of inPoints = N / 2 numbers. In a pass of radix 4 with the stride s, number
// j = q + s * p of the first quarter meets those as far into the other ones, and the results 1 to 3 are turned by p, 2 p
// and 3 p parts of inPoints / s. Their cosines and negative sines stand in six lists, the cosines of 1 first, then its
// sines. The last pass turns nothing.
//
// Strides below kSharedStride have lists by j, of a quarter of inPoints each, so that neighbours lie side by side. The
// others have six numbers for each p.
//
// After the passes' lists come the cosines and the sines of the angles 2 pi k / N for k below N / 4.
inline constexpr unsigned kSharedStride = 16;

// The floats of one pass.
constexpr unsigned CountTurns(unsigned inPoints, unsigned inStride)
{
	return inPoints / inStride <= 4   ? 0
		   : inStride < kSharedStride ? 6 * (inPoints / 4)
									  : 6 * (inPoints / 4 / inStride);
}

} // namespace zorvaccelerate::utility
