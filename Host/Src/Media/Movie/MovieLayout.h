#pragma once

#include "SonaroHost/Media/AudioFileInfo.h"

#include <vector>

namespace SonaroHost
{

class MovieInput;

// Sets the layout and the order of the channels of these streams of the file outInfo.mPath: 5.1 where six channels have those places, in any order,
// or where they are of one stream that names none.
void SetMovieLayout(
	MovieInput const& inInput, std::vector<unsigned> const& inStreams, AudioFileInfo& outInfo);

} // namespace SonaroHost
