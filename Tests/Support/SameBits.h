#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <vector>

// Whether two floats are the same bits; what is not a number equals any other that is none.
inline bool SameBits(float inA, float inB)
{
	return (std::isnan(inA) && std::isnan(inB)) ||
		   std::bit_cast<std::uint32_t>(inA) == std::bit_cast<std::uint32_t>(inB);
}

inline bool SameBits(std::vector<float> const& inA, std::vector<float> const& inB)
{
	return std::equal(inA.begin(), inA.end(), inB.begin(), inB.end(),
		[](float inLeft, float inRight) { return SameBits(inLeft, inRight); });
}
