#pragma once

#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/IAudioRenderContext.h"
#include "SonaroHost/Render/ProgrammePlan.h"

namespace SonaroHost
{

// The size of blocks, at most kMaxBlockFrames, by which the size that was asked for is not heard: where a resampler
// works, which goes by blocks, always the same.
unsigned ChooseTrackBlock(unsigned inBlockFrames, ProgrammePlan const& inPlan);

// A track that holds the clips of a plan in their places, silence between, with a fader for the fades.
// Throws a HostError when the engine refuses it.
SN::InterfaceRef<SN::IAudioGenerator> MakeClipTrack(
	SN::InterfaceRef<SN::IAudioRenderContext> const& inContext, ProgrammePlan const& inPlan);

} // namespace SonaroHost
