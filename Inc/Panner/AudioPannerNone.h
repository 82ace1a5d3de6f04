#pragma once

#include "AudioRender/Core/AudioRenderContextClient.h"
#include "Panner/PanProcessorBase.h"

namespace SN
{

// No panner at all: it writes nothing, and whoever holds it passes the input on instead, as
// DoesNotAlterAudio says.
class AudioPannerNone final : public PanProcessorBase, public AudioRenderContextClient
{
public:
	// eNullPointer without a context.
	static int Create(InterfaceRef<IAudioRenderContext> const& inContext, AudioChannelLayout const& inLayout,
		InterfaceRef<IAudioPanProcessor>* outProcessor);

	explicit AudioPannerNone(AudioChannelLayout const& inLayout);

	InterfaceRef<IAudioPanProcessor> Clone(FrameRate const& inFrameRate, unsigned inControlInterval) override;
	bool DoesNotAlterAudio() SONARO_NONBLOCKING override { return true; }
	void ProcessAudioData(
		dsp::AudioBuffer const&, dsp::AudioBuffer&, TickTime const&) SONARO_NONBLOCKING override
	{
	}
};

} // namespace SN
