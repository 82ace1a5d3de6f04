#pragma once

#include "Sonaro/Prefetcher.h"

namespace SN
{

// A time that runs ahead of a looping playhead, moved to the loop's other side where it has left the loop in
// the direction of play. As it is without a playback, and in one that does not loop.
inline TickTime WrapIntoLoop(TickTime const& inTime, Prefetcher const* inPrefetcher)
{
	if (!inPrefetcher || inPrefetcher->mLoopEnabled == 0)
	{
		return inTime;
	}
	TickTime const loop = inPrefetcher->mEnd - inPrefetcher->mStart;
	if (inPrefetcher->mReverse != 0)
	{
		return inTime <= inPrefetcher->mStart ? inTime + loop : inTime;
	}
	return inTime >= inPrefetcher->mEnd ? inTime - loop : inTime;
}

} // namespace SN
