#include "Panner/AudioPannerChannelMap.h"

#include "zorvaudiodsp/AudioBuffer.h"

namespace SN
{

int AudioPannerChannelMap::Create(InterfaceRef<IAudioRenderContext> const& inContext,
	FrameRate const& inFrameRate, AudioChannelType inOutputType,
	InterfaceRef<IAudioPanProcessor>* outProcessor)
{
	auto const panner = zorvcore::classref::MakeObject<AudioPannerChannelMap>(inOutputType);
	int const result = panner->AudioRenderContextClient::Init(inContext, inFrameRate);
	if (ResultSucceeded(result))
	{
		*outProcessor = panner;
	}
	return result;
}

AudioPannerChannelMap::AudioPannerChannelMap(AudioChannelType inOutputType)
	: PanProcessorBase(u"AudioPannerChannelMap", VX::kAudioChannelTypeAdaptive, inOutputType)
{
}

InterfaceRef<IAudioPanProcessor> AudioPannerChannelMap::Clone(FrameRate const&, unsigned)
{
	auto const clone = StartClone(*this, GetOutputChannelType());
	return clone;
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
