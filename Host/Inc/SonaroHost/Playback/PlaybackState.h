#pragma once

#include "SonaroHost/Base/ProgrammeRange.h"

#include <cstdint>
#include <optional>
#include <string>

namespace SonaroHost::Playback
{

// What a playback does at one moment.
struct PlaybackState
{
	// From Play until Stop, or until the device has taken the end of the programme.
	bool mIsPlaying = false;
	// The frame of the programme that is heard now: what waits in the ring and in the device comes after it.
	std::int64_t mFrame = 0;
	// The length of the programme.
	std::int64_t mFrames = 0;
	// As it was set; below 0 backwards.
	double mSpeed = 1.0;
	std::optional<ProgrammeRange> mLoop;
	// Blocks of the device that were silent, in part or all, since frames came too late, with those that the device lost.
	std::uint64_t mMisses = 0;
	// Frames of the device's blocks that were silent since they came too late, without those that the device lost.
	std::uint64_t mMissedFrames = 0;
	// Frames of media that were silent although they were read, since there was no memory to keep them until they were heard.
	std::uint64_t mUnreadFrames = 0;
	// Why it stopped by itself before the end, until it plays again; empty otherwise.
	std::string mFailure;
};

} // namespace SonaroHost::Playback
