#pragma once

#include "SonaroHost/Media/AudioFileInfo.h"
#include "SonaroHost/Offline/DenoiseProcessor.h"

#include <cstdint>
#include <exception>

namespace SonaroHost
{

// The recording that is a file with its noise reduced; copies share what is learned. Throws a HostError for a reduction
// out of range, and for a span to learn from that is too short or not within the file.
AudioFileInfo MakeDenoised(AudioFileInfo inFile, Denoise const& inDenoise);

// The file that a recording is made of, as it is; of others the same.
AudioFileInfo GetNoisyFileOf(AudioFileInfo inRecording);

// What reduces the noise of a recording that is not stretched, from a frame on.
DenoiseProcessor::Settings MakeSettings(AudioFileInfo const& inRecording, std::int64_t inFirst);

// Throws a failure of a process, a HostError with the name of the file.
[[noreturn]] void RethrowFor(AudioFileInfo const& inRecording, std::exception_ptr const& inFailure);

} // namespace SonaroHost
