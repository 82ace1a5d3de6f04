#include "Panner/AudioPannerDefaultMultiChannel.h"

#include "Panner/CreatePanner.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>

namespace SN
{

int AudioPannerDefaultMultiChannel::Create(AutomatedPannerSettings const& inSettings,
	AudioChannelMatrix const& inMatrix, AudioChannelLayout const& inInputLayout,
	AudioChannelLayout const& inOutputLayout, InterfaceRef<IAudioPanProcessor>* outProcessor)
{
	return CreatePanner(zorvcore::classref::MakeObject<AudioPannerDefaultMultiChannel>(
							inInputLayout, inOutputLayout, inMatrix),
		outProcessor, inSettings, kAnyParameterCount);
}

AudioPannerDefaultMultiChannel::AudioPannerDefaultMultiChannel(AudioChannelLayout const& inInputLayout,
	AudioChannelLayout const& inOutputLayout, AudioChannelMatrix const& inMatrix)
	: AutomatedPanner(u"AudioPannerDefaultMultiChannel", inInputLayout, inOutputLayout),
	  mMatrix(inMatrix)
{
}

InterfaceRef<IAudioPanProcessor> AudioPannerDefaultMultiChannel::Clone(
	FrameRate const& inFrameRate, unsigned inControlInterval)
{
	auto const clone = zorvcore::classref::MakeObject<AudioPannerDefaultMultiChannel>(
		GetInputAudioChannelLayout(), GetOutputAudioChannelLayout(), mMatrix);
	clone->CopyFrom(*this, inFrameRate, inControlInterval);
	return clone;
}

void AudioPannerDefaultMultiChannel::ProcessAudioData(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, TickTime const&)
{
	if (inInput.IsSilent())
	{
		outOutput.Zero();
		return;
	}
	unsigned const channels = std::min(GetNumInputChannels(), GetNumOutputChannels());
	if (mMatrix.size() != channels)
	{
		for (unsigned channel = 0; channel < channels; ++channel)
		{
			outOutput.CopyChannel(inInput, channel, channel);
		}
		return;
	}
	for (auto const& [input, outputs] : mMatrix)
	{
		if (!outputs.empty())
		{
			outOutput.CopyChannel(inInput, input, *outputs.begin());
		}
	}
}

} // namespace SN
