#pragma once

#include "Sonaro/Types.h"

#include <cstdint>

namespace SN
{

// What a host says of a playback: its loop and its direction. Nodes read it while they are pulled and
// while they gather prefetch requests; the host writes it while neither happens. It reads nothing ahead
// itself: AudioPrefetch does.
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
