#include "Panner/AudioPanner51ToAdaptive.h"

#include "Panner/CreatePanner.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvmediatypes/AudioChannelLayout.h"

namespace SN
{

int AudioPanner51ToAdaptive::Create(InterfaceRef<IAudioRenderContext> const& inContext,
	FrameRate const& inFrameRate, int inOutputChannels, AudioChannelMatrix const& inMatrix,
	InterfaceRef<IAudioPanProcessor>* outProcessor)
{
	auto const layout = zorvmediatypes::CreateMultichannelLayout(inOutputChannels);
	return CreatePanner(zorvcore::classref::MakeObject<AudioPanner51ToAdaptive>(layout), outProcessor,
		inContext, inFrameRate, inMatrix);
}

AudioPanner51ToAdaptive::AudioPanner51ToAdaptive(AudioChannelLayout const& inOutputLayout)
	: PanProcessorBase({u"AudioPanner51ToAdaptive", VX::kAudioChannelType51, VX::kAudioChannelTypeAdaptive,
		  VX::kAudioChannelLayout_51, inOutputLayout})
{
}

int AudioPanner51ToAdaptive::Init(InterfaceRef<IAudioRenderContext> const& inContext,
	FrameRate const& inFrameRate, AudioChannelMatrix const& inMatrix)
{
	AudioPannerDirectChannelAssignmentBase::Init(inMatrix, GetOutputAudioChannelLayout());
	int const result = AudioRenderContextClient::Init(inContext, inFrameRate);
	bool const isTooWide = GetNumOutputChannels() > dsp::AudioBuffer::kMaxChannels;
	return ResultSucceeded(result) && isTooWide ? eInvalidArgument : result;
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
