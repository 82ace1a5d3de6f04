#pragma once

#include "Media/SoundDecoder.h"
#include "SonaroHost/Media/AudioFileInfo.h"

#include <filesystem>
#include <memory>
#include <optional>

namespace SonaroHost
{

// The door to what libav reads. A build without it has another source behind the same functions, which refuses movies.

// Nothing when the file is no movie, nor any other container of sound that is read so. Throws a HostError when it is one
// that cannot be read, a SilentMovieError when it has no sound. inStream: see InspectAudioFile.
std::optional<AudioFileInfo> InspectMovie(std::filesystem::path const& inPath, unsigned inStream);

// Throws a HostError when the file cannot be opened any more.
std::unique_ptr<SoundDecoder> OpenMovieDecoder(AudioFileInfo const& inInfo);

} // namespace SonaroHost
