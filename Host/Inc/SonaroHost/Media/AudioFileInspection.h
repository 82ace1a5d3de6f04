#pragma once

#include "SonaroHost/Media/AudioFileInfo.h"

#include <filesystem>

namespace SonaroHost
{

// Opens the file, or the standard input for "-", checks that it holds what its header promises, and says what it is. Throws a
// HostError that says what is wrong with it, a SilentMovieError for a movie without sound.
//
// inStream  Which audio stream of a movie is read, from 1; 0 for all of them, their channels one after the other.
AudioFileInfo InspectAudioFile(std::filesystem::path const& inPath, unsigned inStream = 0);

} // namespace SonaroHost
