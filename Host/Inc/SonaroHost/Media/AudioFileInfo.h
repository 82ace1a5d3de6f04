#pragma once

#include "SonaroHost/Media/NoSoundError.h"
#include "zorvmediatypes/AudioChannelDescription.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace SonaroHost
{

// What a sound file says of itself, checked when it was opened.
struct AudioFileInfo
{
	std::filesystem::path mPath;
	// Names for people, for instance "WAV (Microsoft)" and "Signed 16 bit PCM".
	std::string mContainer;
	std::string mEncoding;
	// Bits of integer samples; 0 for floats and for compressed audio that loses bits.
	int mIntegerBits = 0;

	int mSampleRate = 0;
	std::int64_t mFrames = 0;
	// False when the header states no length, so that it was found by decoding or from the file's size.
	bool mStatesLength = true;

	zorvmediatypes::AudioChannelLayout mLayout;
	// The place of each channel of mLayout in a frame of the file.
	std::vector<unsigned> mChannelOrder;

	unsigned GetNumChannels() const { return static_cast<unsigned>(mChannelOrder.size()); }
};

// Opens the file, or the standard input for "-", checks that it holds what its header promises, and says what it is. Throws a
// HostError that says what is wrong with it.
AudioFileInfo InspectAudioFile(std::filesystem::path const& inPath);

} // namespace SonaroHost
