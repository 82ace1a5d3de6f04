#pragma once

#include "NaiveParameter.h"
#include "SonaroHost/Sequence/Description.h"

#include <cstdint>
#include <vector>

namespace SonaroHost::Sequence::Testing
{

// By channel and frame.
using Signal = std::vector<std::vector<double>>;

struct NaiveRange
{
	// Frames from the sequence's time 0 on.
	std::int64_t mFrames = 0;
	SN::FrameRate mFrameRate;
	// Of tracks, submixes, items and the master of the outermost sequence; null for none.
	LiveEdits const* mEdits = nullptr;
};

// What a sequence means: each track in one array of doubles over all time, without blocks and latencies.
// Media are MemoryMedia at the range's rate, effects LatentEffects, speeds 1, 0 and -1.
Signal RenderNaively(Description const& inSequence, NaiveRange const& inRange);

// The frame of that rate which is nearest to a time.
std::int64_t GetNearestFrame(SN::TickTime const& inTime, SN::FrameRate const& inFrameRate);

} // namespace SonaroHost::Sequence::Testing
