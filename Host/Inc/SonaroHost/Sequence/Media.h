#pragma once

#include "Sonaro/IAudioSource.h"
#include "Sonaro/Types.h"

#include <cstdint>
#include <functional>
#include <string>

namespace SonaroHost::Sequence
{

// A recording that clips are cut from. Clips that share one of these share what the engine reads of it.
struct Media
{
	// For messages.
	std::string mName;
	// Samples a second, as the recording has them.
	double mSampleRate = 48000.0;
	// The recording's length in its own samples; beyond it is silence.
	std::int64_t mFrames = 0;
	SN::AudioChannelLayout mLayout;
	// Gives a source that counts by the rate which it is given: the recording's sample k stands at k frames of
	// that rate, and GetFrameRate says so. Called on the thread that builds a graph, at most once for each
	// graph, which keeps the source. In a playback the source is read on the prefetch thread. Throws a HostError when it cannot.
	std::function<SN::InterfaceRef<SN::IAudioSource>(SN::FrameRate const& inCountingRate)> mOpen;
	// Whether its samples are those of the file at the same places, rather than at other ones, as of a stretched recording, or
	// of no file. Messages then name places in it, and plans of pieces count what has to be made as more costly.
	bool mIsFile = true;
	// Whether its noise is reduced while it is read.
	bool mIsDenoised = false;
};

} // namespace SonaroHost::Sequence
