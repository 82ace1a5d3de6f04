#pragma once

#include "SonaroHost/Files/FileState.h"
#include "SonaroHost/Media/MediaDamage.h"
#include "SonaroHost/Media/MediaStart.h"
#include "SonaroHost/Media/Stretch.h"
#include "SonaroHost/Offline/Denoise.h"
#include "SonaroHost/Offline/NoiseProfile.h"
#include "zorvmediatypes/AudioChannelDescription.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace SonaroHost
{

struct MovieIndex;

// One of the audio streams of a movie.
struct AudioStreamInfo
{
	// For people, for instance "AAC (Advanced Audio Coding)".
	std::string mEncoding;
	// "English", "Director's comments"; empty where the movie gives no name.
	std::string mName;
	unsigned mChannels = 0;
	int mSampleRate = 0;
	// Whether its channels are among those that are read.
	bool mIsRead = false;
};

// What a sound file or a movie says of itself, checked when it was opened.
struct AudioFileInfo
{
	std::filesystem::path mPath;
	// When it was inspected: what reads it by this refuses it once it has changed. Nothing where that is not to be checked.
	std::optional<FileState> mState;
	// Names for people, for instance "WAV (Microsoft)" and "Signed 16 bit PCM".
	std::string mContainer;
	std::string mEncoding;
	// Bits of integer samples; 0 for floats and for compressed audio that loses bits.
	int mIntegerBits = 0;

	// In Hz.
	int mSampleRate = 0;
	// The length in frames of that rate.
	std::int64_t mFrames = 0;
	// False when the header states no length, so that it was found by decoding or from the file's size.
	bool mStatesLength = true;

	zorvmediatypes::AudioChannelLayout mLayout;
	// The place of each channel of mLayout in a frame of the file.
	std::vector<unsigned> mChannelOrder;

	// When the recording began, where the file says so.
	std::optional<MediaStart> mStart;
	// Which audio stream of a movie is read, from 1; 0 for all.
	unsigned mStream = 0;
	// The audio streams of a movie in the order of the file; empty for sound files.
	std::vector<AudioStreamInfo> mStreams;
	// For people, about what of the file is not read and why: clauses without the name of the file.
	std::vector<std::string> mRemarks;
	// What is known to be damaged: what inspecting the file found, and what those who read it by this find.
	std::shared_ptr<MediaDamage> mDamage = std::make_shared<MediaDamage>();
	// Where a movie's samples lie; null for sound files.
	std::shared_ptr<MovieIndex const> mMovie;
	// Where the noise of the file is reduced, before it is stretched; and what was learned of it, null elsewhere.
	std::optional<Denoise> mDenoise;
	std::shared_ptr<SharedNoiseProfile> mNoise;
	// Where the recording is the file stretched; mFrames and all positions then count its own frames, and mFileFrames
	// those of the file.
	std::optional<Stretch> mStretch;
	std::int64_t mFileFrames = 0;
	// Frames of silence before the first one, as a source counts them.
	std::int64_t mFramesBefore = 0;

	unsigned GetNumChannels() const { return static_cast<unsigned>(mChannelOrder.size()); }
};

} // namespace SonaroHost
