#include "Panner/AudioPannerChannelMap.h"

#include "zorvaudiodsp/AudioBuffer.h"

namespace SN
{

int AudioPannerChannelMap::Init(InterfaceRef<IAudioRenderContext> const& inContext,
	FrameRate const& inFrameRate, AudioChannelType inOutputType)
{
	SetShape({u"AudioPannerChannelMap", VX::kAudioChannelTypeAdaptive, inOutputType,
		VX::kAudioChannelLayout_Multichannel, VX::CreateAudioChannelLayout(inOutputType)});
	return AudioRenderContextClient::Init(inContext, inFrameRate);
}

void AudioPannerChannelMap::ProcessAudioData(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, TickTime const&)
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

} // namespace SN
