#pragma once

#include "Base/CurvePositions.h"
#include "SonaroHost/Media/AudioFileInfo.h"

#include <cstdint>

namespace SonaroHost
{

// The recording that is made of a file by stretching it. inFile: of a file that is not stretched. What is found damaged
// goes on counting for the file, at its own positions. Throws a HostError where there is more than the engine can stretch.
AudioFileInfo MakeStretched(AudioFileInfo inFile, Stretch const& inStretch);

// The file that a recording is made of; of others the same.
AudioFileInfo GetFileOf(AudioFileInfo inRecording);

// Where the frames of a recording along a ramp stand in the file; where that passes backwards, frame k is the output -k.
CurvePositions MakeRampPositions(AudioFileInfo const& inRecording);

// The file's frame that is heard at a frame of the recording, or the last one before it.
std::int64_t GetFrameOfFile(AudioFileInfo const& inRecording, std::int64_t inFrame);

} // namespace SonaroHost
