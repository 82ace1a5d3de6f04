#include "Panner/AudioPannerStereoToAdaptive.h"

#include "AudioRender/Core/StackAudioBufferTags.h"
#include "Panner/CreatePanner.h"
#include "zorvmediatypes/AudioChannelLayout.h"

namespace SN
{

int AudioPannerStereoToAdaptive::Create(AutomatedPannerSettings const& inSettings, int inOutputChannels,
	AudioChannelMatrix const& inMatrix, InterfaceRef<IAudioPanProcessor>* outProcessor)
{
	auto const layout = zorvmediatypes::CreateMultichannelLayout(inOutputChannels);
	return CreatePanner(zorvcore::classref::MakeObject<AudioPannerStereoToAdaptive>(layout), outProcessor,
		inSettings, inMatrix, StackAudioBufferTags::kAudioPannerStereoToAdaptive);
}

AudioPannerStereoToAdaptive::AudioPannerStereoToAdaptive(AudioChannelLayout const& inOutputLayout)
	: AdaptivePanner(u"AudioPannerStereoToAdaptive", VX::kAudioChannelTypeStereo, 1, inOutputLayout)
{
}

InterfaceRef<IAudioPanProcessor> AudioPannerStereoToAdaptive::Clone(
	FrameRate const& inFrameRate, unsigned inControlInterval)
{
	auto const clone =
		zorvcore::classref::MakeObject<AudioPannerStereoToAdaptive>(GetOutputAudioChannelLayout());
	clone->CopyFrom(*this, inFrameRate, inControlInterval);
	return clone;
}

} // namespace SN
