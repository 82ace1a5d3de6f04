#pragma once

#include "SonaroHost/Media/AudioFileInfo.h"
#include "SoundDecoder.h"

#include <memory>

namespace SonaroHost
{

// A decoder at the start of a file that was inspected: libsndfile's or, for a movie, libav's; for one
// that is stretched, what stretches their samples. Throws a HostError when the file cannot be opened any more.
std::unique_ptr<SoundDecoder> OpenSoundDecoder(AudioFileInfo const& inInfo);

} // namespace SonaroHost
