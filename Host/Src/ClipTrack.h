#pragma once

#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/IAudioRenderContext.h"
#include "Sonaro/Types.h"
#include "SonaroHost/Fades.h"

#include <cstdint>

namespace SonaroHost
{

// Blocks of a track are whole numbers of its control blocks, so that their size is not heard.
unsigned ChooseTrackBlock(unsigned inBlockFrames);

// What a clip on a track becomes.
struct ClipTrackSettings
{
	SN::FrameRate mFrameRate;
	SN::AudioChannelLayout const& mLayout;
	// Of the track, from time 0 on.
	std::int64_t mFrames = 0;
	Fades mFades;
};

// A track that holds the clip from time 0 on, with a fader. Throws a HostError when the engine refuses it.
SN::InterfaceRef<SN::IAudioGenerator> MakeClipTrack(
	SN::InterfaceRef<SN::IAudioRenderContext> const& inContext,
	SN::InterfaceRef<SN::IAudioGenerator> const& inClip, ClipTrackSettings const& inSettings);

} // namespace SonaroHost
