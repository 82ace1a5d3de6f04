#pragma once

#include "Panner/PanProcessorBase.h"
#include "Panner/PannerClass.h"

namespace SN
{

// No panner at all: it writes nothing, and whoever holds it passes the input on instead, as
// DoesNotAlterAudio says.
class AudioPannerNone final : public PannerClass<AudioPannerNone, PanProcessorBase>
{
public:
	// eNullPointer without a context.
	int Init(InterfaceRef<IAudioRenderContext> const& inContext, AudioChannelLayout const& inLayout)
	{
		SetShape(u"AudioPannerNone", inLayout, inLayout);
		// It has no rate: nothing that it does takes time.
		int const result = AudioRenderContextClient::Init(inContext, FrameRate());
		return result == eNullPointer ? result : kSuccess;
	}

	bool DoesNotAlterAudio() SONARO_NONBLOCKING override { return true; }
	void ProcessAudioData(
		dsp::AudioBuffer const&, dsp::AudioBuffer&, TickTime const&) SONARO_NONBLOCKING override
	{
	}
};

} // namespace SN
