#pragma once

#include "LayoutPanner.h"
#include "Sonaro/AudioChannelMix.h"

namespace SonaroHost::Sequence
{

// The engine's fixed conversion between two layouts, as a pan processor: without state, so that one serves any number
// of tracks and items.
class ConversionPanner final : public SN::Implements<ConversionPanner, LayoutPanner>
{
public:
	// Converts by the mixdown that is set when this object is made.
	ConversionPanner(SN::AudioChannelLayout const& inInput, SN::AudioChannelLayout const& inOutput)
		: Implements(inInput, inOutput),
		  mMix(SN::AudioChannelMix::GetMixFunction(inInput, inOutput))
	{
	}

	SN::InterfaceRef<SN::IAudioPanProcessor> Clone(SN::FrameRate const&, unsigned) override
	{
		return SN::InterfaceRef<SN::IAudioPanProcessor>::FromThis(this);
	}
	void ProcessAudioData(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
		SN::TickTime const&) SONARO_NONBLOCKING override
	{
		mMix(inInput, outOutput);
	}

private:
	SN::AudioChannelMix::MixFunction mMix;
};

} // namespace SonaroHost::Sequence
