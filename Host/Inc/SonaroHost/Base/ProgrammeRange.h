#pragma once

#include <cstdint>

namespace SonaroHost
{

// Frames of a programme, counted from its start.
struct ProgrammeRange
{
	std::int64_t mFirstFrame = 0;
	// How many.
	std::int64_t mFrames = 0;
};

} // namespace SonaroHost
