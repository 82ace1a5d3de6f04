#pragma once

#include "Panner/PanProcessorBase.h"
#include "Panner/PannerClass.h"
#include "zorvaudiodsp/AudioBuffer.h"

namespace SN
{

// Keeps the first channels of a multichannel signal, unmixed: as many as the layout of a type has.
class AudioPannerChannelMap final : public PannerClass<AudioPannerChannelMap, PanProcessorBase>
{
public:
	int Init(InterfaceRef<IAudioRenderContext> const& inContext, FrameRate const& inFrameRate,
		AudioChannelType inOutputType)
	{
		SetShape({u"AudioPannerChannelMap", VX::kAudioChannelTypeAdaptive, inOutputType,
			VX::kAudioChannelLayout_Multichannel, VX::CreateAudioChannelLayout(inOutputType)});
		return AudioRenderContextClient::Init(inContext, inFrameRate);
	}

	void ProcessAudioData(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
		TickTime const&) SONARO_NONBLOCKING override
	{
		if (inInput.IsSilent())
		{
			outOutput.Zero();
			return;
		}
		for (unsigned channel = 0; channel < GetNumOutputChannels(); ++channel)
		{
			outOutput.CopyChannel(inInput, channel, channel);
		}
	}
};

} // namespace SN
