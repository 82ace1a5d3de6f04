#pragma once

#include "Container/QuickTimeTracks.h"
#include "SonaroHost/Media/AudioFileInfo.h"

#include <vector>

namespace SonaroHost
{

class MovieInput;

// Sets the layout and the order of the channels of these streams: 5.1 where six channels have those places, in any
// order, or where they are of one stream that names none. inTracks: the QuickTime track of each, one without a tag
// where there is none.
void SetMovieLayout(MovieInput const& inInput, std::vector<unsigned> const& inStreams,
	std::vector<QuickTimeTrack> const& inTracks, AudioFileInfo& outInfo);

} // namespace SonaroHost
