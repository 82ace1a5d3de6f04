#pragma once

#include "Panner/PanProcessorBase.h"
#include "Panner/PannerClass.h"

namespace SN
{

// Keeps the first channels of a multichannel signal, unmixed: as many as the layout of a type has.
class AudioPannerChannelMap final : public PannerClass<AudioPannerChannelMap, PanProcessorBase>
{
public:
	int Init(InterfaceRef<IAudioRenderContext> const& inContext, FrameRate const& inFrameRate,
		AudioChannelType inOutputType);

	void ProcessAudioData(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
		TickTime const& inTime) SONARO_NONBLOCKING override;
};

} // namespace SN
