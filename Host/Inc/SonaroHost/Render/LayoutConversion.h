#pragma once

#include "Sonaro/AudioChannelMix.h"
#include "Sonaro/IAudioPanProcessor.h"
#include "Sonaro/IAudioRenderContext.h"
#include "Sonaro/IParameterOwnerMixin.h"
#include "Sonaro/Types.h"
#include "SonaroHost/Engine/LayoutPlan.h"
#include "zorvaudiodsp/AudioBuffer.h"

namespace SonaroHost
{

// Carries out a plan, block by block, as a track of the engine does.
//
// Mixdown  The engine's choice of a 5.1 mixdown holds for the whole process: the constructor sets the
//          plan's and restores the old one. No other thread builds a graph meanwhile.
// Threads  One at a time. Nothing allocates after the constructor.
class LayoutConversion
{
public:
	// inContext: that of the render, which has the largest block and clears up after the panner.
	LayoutConversion(LayoutPlan const& inPlan, SN::InterfaceRef<SN::IAudioRenderContext> const& inContext,
		SN::FrameRate const& inFrameRate);

	// Called before the first block.
	void Preroll(SN::TickTime const& inTime, bool inReverse);

	// The block in the output's layout, until the next call: ioBlock itself where nothing is to be done.
	// inTime: the block's own. Samples of ioBlock that a silence flag covers may be overwritten.
	dsp::AudioBuffer& Convert(dsp::AudioBuffer& ioBlock, SN::TickTime const& inTime);

private:
	void MakePanner(LayoutPlan const& inPlan, SN::InterfaceRef<SN::IAudioRenderContext> const& inContext,
		SN::FrameRate const& inFrameRate);

	// One of them at most; neither where the channels pass as they are.
	SN::AudioChannelMix::MixFunction mMix;
	SN::InterfaceRef<SN::IAudioPanProcessor> mPanner;
	// The panner's parameters; empty for a panner without any.
	SN::InterfaceRef<SN::IParameterOwnerMixin> mParameters;
	dsp::AudioBuffer mOutput;
};

} // namespace SonaroHost
