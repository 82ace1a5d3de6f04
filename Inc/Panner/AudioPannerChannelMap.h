#pragma once

#include "AudioRender/Core/AudioRenderContextClient.h"
#include "Panner/PanProcessorBase.h"

namespace SN
{

// Keeps the first channels of a multichannel signal, unmixed: as many as the layout of a type has.
class AudioPannerChannelMap final : public PanProcessorBase, public AudioRenderContextClient
{
public:
	static int Create(InterfaceRef<IAudioRenderContext> const& inContext, FrameRate const& inFrameRate,
		AudioChannelType inOutputType, InterfaceRef<IAudioPanProcessor>* outProcessor);

	explicit AudioPannerChannelMap(AudioChannelType inOutputType);

	InterfaceRef<IAudioPanProcessor> Clone(FrameRate const& inFrameRate, unsigned inControlInterval) override;
	void ProcessAudioData(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
		TickTime const& inTime) SONARO_NONBLOCKING override;
};

} // namespace SN
