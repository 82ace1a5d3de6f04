#pragma once

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
	// Where the pull of the graph begins, warm-up included: there the grid begins on which curves are sampled.
	std::int64_t mFirstPulled = 0;
	SN::FrameRate mFrameRate;
};

// What a sequence means: each track in one array of doubles over all time, without blocks and latencies.
// Media are MemoryMedia at the range's rate, effects LatentEffects, speeds 1, 0 and -1. Curves are heard on
// faders and sends of the outermost sequence's tracks, submixes and master; elsewhere parameters stand still.
Signal RenderNaively(Description const& inSequence, NaiveRange const& inRange);

// The frame of that rate which is nearest to a time.
std::int64_t GetNearestFrame(SN::TickTime const& inTime, SN::FrameRate const& inFrameRate);

} // namespace SonaroHost::Sequence::Testing
