#include "Panner/AudioPannerDefaultMultiChannel.h"

#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>

namespace SN
{

int AudioPannerDefaultMultiChannel::Init(AutomatedPannerSettings const& inSettings,
	AudioChannelMatrix const& inMatrix, AudioChannelLayout const& inInputLayout,
	AudioChannelLayout const& inOutputLayout)
{
	SetShape(u"AudioPannerDefaultMultiChannel", inInputLayout, inOutputLayout);
	mMatrix = inMatrix;
	return AutomatedPanner::Init(inSettings, kAnyParameterCount);
}

void AudioPannerDefaultMultiChannel::CopyFrom(
	AudioPannerDefaultMultiChannel const& inOther, FrameRate const& inFrameRate, unsigned inControlInterval)
{
	AutomatedPanner::CopyFrom(inOther, inFrameRate, inControlInterval);
	mMatrix = inOther.mMatrix;
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
