#pragma once

#include <cmath>
#include <cstddef>

// Finds samples that are infinite or not a number.
namespace SonaroHost
{

// The index of the first one that is not finite; inCount for none.
inline std::size_t FindNotFinite(float const* inSamples, std::size_t inCount)
{
	for (std::size_t i = 0; i < inCount; ++i)
	{
		if (!std::isfinite(inSamples[i]))
		{
			return i;
		}
	}
	return inCount;
}

} // namespace SonaroHost
