#pragma once

#include "Container/QuickTimeTracks.h"
#include "MovieIndex.h"

#include <cstdint>
#include <vector>

namespace SonaroHost
{

// Whether the edits of a track are more than one part of its media after an empty time. libavformat presents whole
// packets at the joints of such.
bool HasSeveralSegments(QuickTimeTrack const& inTrack);

// What is presented of a track's media. Segments begin and end at the samples nearest to their times. Throws a
// std::runtime_error for edits that change the speed.
std::vector<MovieIndex::Segment> MakeSegments(
	QuickTimeTrack const& inTrack, int inSampleRate, std::int64_t inMediaFrames);

} // namespace SonaroHost
