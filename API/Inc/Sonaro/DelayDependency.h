#pragma once

#include <cstdint>

namespace SN
{

// One delay that the host has worked out for a track: for each of its sends in their order, and last for
// its output. The first two fields are the host's own.
struct DelayDependency
{
	std::uint32_t mSource = 0;
	std::uint32_t mDestination = 0;
	// In samples.
	std::uint32_t mDelay = 0;
};

} // namespace SN
