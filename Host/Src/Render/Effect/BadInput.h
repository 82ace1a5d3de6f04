#pragma once

#include "Sonaro/Types.h"
#include "SonaroHost/Sequence/Description.h"

#include <cstdint>
#include <optional>
#include <string>

namespace SonaroHost
{

// A clip whose recording has samples that are infinite or not a number.
struct BadInput
{
	std::string mItem;
	// The mOrigin of the clip, and the name of its recording.
	std::string mOrigin;
	std::string mMedia;
	// The first of them there, by its frame in the recording; absent where that is not the file itself, but what was made of
	// it, such as a stretched one.
	std::optional<std::int64_t> mFrame;
};

// The first clip that is heard at about a time of a sequence and has such samples there. It reads the recordings, as a
// render does that has ended.
std::optional<BadInput> FindBadInput(
	Sequence::Description const& inDescription, SN::FrameRate const& inFrameRate, SN::TickTime const& inTime);

} // namespace SonaroHost
