#pragma once

#include "Sonaro/Types.h"

#include <cstdint>

namespace SN
{

// A playback as the host tells it to its graph: filled by the host, read by the nodes on the thread
// that pulls the graph.
struct Prefetcher
{
	// The loop range.
	TickTime mStart = kTime_Invalid;
	TickTime mEnd = kTime_Invalid;
	std::uint32_t mLoopEnabled = 0;
	// Playback runs backwards.
	std::uint32_t mReverse = 0;
};

} // namespace SN
