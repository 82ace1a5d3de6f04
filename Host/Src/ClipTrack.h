#pragma once

#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/IAudioRenderContext.h"
#include "Sonaro/Types.h"
#include "SonaroHost/Fades.h"

#include <cstdint>

namespace SonaroHost
{

// The size of blocks by which the size that was asked for is not heard: whole numbers of control blocks, and
// at any speed but 1, where a resampler goes by blocks, always the same.
unsigned ChooseTrackBlock(unsigned inBlockFrames, double inSpeed);

// What a clip on a track becomes.
struct ClipTrackSettings
{
	SN::FrameRate mFrameRate;
	SN::AudioChannelLayout const& mLayout;
	// Of the track, from time 0 on.
	std::int64_t mFrames = 0;
	Fades mFades;
	// Of the clip; at 1 nothing is resampled.
	double mSpeed = 1.0;
};

// A track that holds the clip from time 0 on, with a fader. Throws a HostError when the engine refuses it.
SN::InterfaceRef<SN::IAudioGenerator> MakeClipTrack(
	SN::InterfaceRef<SN::IAudioRenderContext> const& inContext,
	SN::InterfaceRef<SN::IAudioGenerator> const& inClip, ClipTrackSettings const& inSettings);

} // namespace SonaroHost
