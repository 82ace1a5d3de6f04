#include "Panner/AudioPanner51ToAdaptive.h"

#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvmediatypes/AudioChannelLayout.h"

namespace SN
{

AudioPanner51ToAdaptive::AudioPanner51ToAdaptive()
	: PannerClass(u"AudioPanner51ToAdaptive", VX::kAudioChannelType51, VX::kAudioChannelTypeAdaptive)
{
}

int AudioPanner51ToAdaptive::Init(InterfaceRef<IAudioRenderContext> const& inContext,
	FrameRate const& inFrameRate, int inOutputChannels, AudioChannelMatrix const& inMatrix)
{
	SetOutputLayout(zorvmediatypes::CreateMultichannelLayout(inOutputChannels));
	AudioPannerDirectChannelAssignmentBase::Init(inMatrix, GetOutputAudioChannelLayout());
	int const result = AudioRenderContextClient::Init(inContext, inFrameRate);
	bool const isTooWide = GetNumOutputChannels() > dsp::AudioBuffer::kMaxChannels;
	return ResultSucceeded(result) && isTooWide ? eInvalidArgument : result;
}

void AudioPanner51ToAdaptive::CopyFrom(
	AudioPanner51ToAdaptive const& inOther, FrameRate const& inFrameRate, unsigned inControlInterval)
{
	PanProcessorBase::CopyFrom(inOther, inFrameRate, inControlInterval);
	AudioPannerDirectChannelAssignmentBase::Init(inOther.GetMatrix(), inOther.GetOutputLayout());
}

void AudioPanner51ToAdaptive::ProcessAudioData(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, TickTime const&)
{
	Process(inInput, outOutput);
}

} // namespace SN
