#include "Panner/AudioPannerChannelMap.h"

#include "Panner/CreatePanner.h"
#include "zorvaudiodsp/AudioBuffer.h"

namespace SN
{

int AudioPannerChannelMap::Create(InterfaceRef<IAudioRenderContext> const& inContext,
	FrameRate const& inFrameRate, AudioChannelType inOutputType,
	InterfaceRef<IAudioPanProcessor>* outProcessor)
{
	return CreatePanner(zorvcore::classref::MakeObject<AudioPannerChannelMap>(inOutputType), outProcessor,
		inContext, inFrameRate);
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
