#pragma once

#include "SonaroHost/Media/MediaStart.h"

#include <optional>

namespace SonaroHost
{

class MovieInput;

// The timecode of the first frame of a movie (a timecode track, the start timecode of an MXF file, a tag), or the time
// reference of sound. Nothing where there is none, or no frame rate to count it with.
std::optional<MediaStart> FindMovieStart(MovieInput const& inInput, int inSampleRate);

} // namespace SonaroHost
