#pragma once

#include "Media.h"

#include <filesystem>
#include <string>

namespace SonaroHost::Testing
{

// Runs ffmpeg, which asks nothing and replaces its outputs. Throws a
// std::runtime_error when it fails.
void RunFfmpeg(std::string const& inArguments);

// Every sample says which it is: 24-bit integers of channel and frame, none of them 0. Up to 32 channels of 2^17 frames.
Sound MakeIndexSound(int inChannels, int inSampleRate, std::int64_t inFrames);

// What ffmpeg decodes of a file's first audio stream.
Sound DecodeByFfmpeg(std::filesystem::path const& inPath, int inChannels, int inSampleRate);

// All of a file's samples by our reader, in blocks from start to end.
Sound ReadMovie(std::filesystem::path const& inPath, unsigned inStream = 0);

// How many frames inSound is late against inReference, of their first channels, at most inMost in either direction.
std::int64_t FindLag(Sound const& inSound, Sound const& inReference, std::int64_t inMost);

} // namespace SonaroHost::Testing
