#pragma once

#include <algorithm>

namespace SN::Testing
{

// How many of so many random trials are made: fewer under sanitizers and on emulated processors, where each is several
// times as slow. What these look for shows in the first few; results are compared in all of the trials by other builds.
constexpr unsigned GetNumTrials(unsigned inCount)
{
#ifdef SONARO_FEWER_TRIALS
	return std::max(1u, inCount / SONARO_FEWER_TRIALS);
#else
	return inCount;
#endif
}

// The smallest blocks that whole renders are cut into: a frame and a few, or more where a pull is dear.
constexpr unsigned kSmallestBlock = GetNumTrials(2) == 2 ? 1 : 29;
constexpr unsigned kSmallBlock = GetNumTrials(2) == 2 ? 7 : 61;

} // namespace SN::Testing
