#include "Panner/AudioPanner51ToAdaptive.h"

#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvmediatypes/AudioChannelLayout.h"

namespace SN
{

int AudioPanner51ToAdaptive::Create(InterfaceRef<IAudioRenderContext> const& inContext,
	FrameRate const& inFrameRate, int inOutputChannels, AudioChannelMatrix const& inMatrix,
	InterfaceRef<IAudioPanProcessor>* outProcessor)
{
	auto const panner = zorvcore::classref::MakeObject<AudioPanner51ToAdaptive>(
		zorvmediatypes::CreateMultichannelLayout(inOutputChannels));
	panner->AudioPannerDirectChannelAssignmentBase::Init(inMatrix, panner->GetOutputAudioChannelLayout());
	int const result = panner->AudioRenderContextClient::Init(inContext, inFrameRate);
	if (ResultSucceeded(result) && panner->GetNumOutputChannels() > dsp::AudioBuffer::kMaxChannels)
	{
		return eInvalidArgument;
	}
	if (ResultSucceeded(result))
	{
		*outProcessor = panner;
	}
	return result;
}

AudioPanner51ToAdaptive::AudioPanner51ToAdaptive(AudioChannelLayout const& inOutputLayout)
	: PanProcessorBase({u"AudioPanner51ToAdaptive", VX::kAudioChannelType51, VX::kAudioChannelTypeAdaptive,
		  VX::kAudioChannelLayout_51, inOutputLayout})
{
}

InterfaceRef<IAudioPanProcessor> AudioPanner51ToAdaptive::Clone(FrameRate const&, unsigned)
{
	auto const clone = StartClone(*this, GetOutputAudioChannelLayout());
	clone->AudioPannerDirectChannelAssignmentBase::Init(GetMatrix(), GetOutputLayout());
	return clone;
}

void AudioPanner51ToAdaptive::ProcessAudioData(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, TickTime const&)
{
	Process(inInput, outOutput);
}

} // namespace SN
