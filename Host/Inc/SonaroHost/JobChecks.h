#pragma once

#include "SonaroHost/AudioFileInfo.h"
#include "SonaroHost/TimePosition.h"

#include <cstdint>
#include <optional>

namespace SonaroHost
{

// Frames of a file.
struct FrameRange
{
	std::int64_t mFirst = 0;
	std::int64_t mFrames = 0;
};

// The range of a file that is asked for, at most to its end. Throws a HostError when there is nothing in it.
FrameRange ChooseRange(
	AudioFileInfo const& inInfo, TimePosition const& inStart, std::optional<TimePosition> const& inDuration);

} // namespace SonaroHost
