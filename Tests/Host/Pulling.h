#pragma once

#include "Media.h"
#include "SonaroHost/Media/AudioFileSource.h"

#include <cstdint>

namespace SonaroHost::Testing
{

// Reads frames of a source as the engine does; silence beyond its ends.
Sound Pull(AudioFileSource& ioSource, std::int64_t inPosition, unsigned inFrames);

// As Pull, through what was prefetched.
Sound PullPrefetched(AudioFileSource& ioSource, std::int64_t inPosition, unsigned inFrames);

// Has a range decoded ahead.
void Prefetch(AudioFileSource& ioSource, std::int64_t inPosition, unsigned inFrames);

// What a plain decode has there, with silence beyond its ends.
Sound CutWithSilence(Sound const& inSound, std::int64_t inPosition, unsigned inFrames);

} // namespace SonaroHost::Testing
