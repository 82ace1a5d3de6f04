#pragma once

#include "SonaroHost/Base/TimePosition.h"
#include "SonaroHost/Media/AudioFileInfo.h"
#include "SonaroHost/Render/Fades.h"

#include <cstdint>
#include <optional>
#include <string>

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

// The fades of so many frames that a file is to get. Throws a HostError, which calls the file inWhat, when they are
// longer together.
Fades ChooseFades(std::optional<TimePosition> const& inFadeIn, std::optional<TimePosition> const& inFadeOut,
	std::int64_t inFrames, int inSampleRate, std::string const& inWhat = "the output");

} // namespace SonaroHost
