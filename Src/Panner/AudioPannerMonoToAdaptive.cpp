#include "Panner/AudioPannerMonoToAdaptive.h"

#include "AudioRender/Core/StackAudioBufferTags.h"
#include "Panner/CreatePanner.h"
#include "zorvmediatypes/AudioChannelLayout.h"

namespace SN
{

namespace
{

AudioChannelMatrix FeedWholePairs(AudioChannelMatrix inMatrix)
{
	if (!inMatrix.empty())
	{
		auto& outputs = inMatrix.begin()->second;
		for (unsigned long long const output : std::set<unsigned long long>(outputs))
		{
			if (output % 2 == 0)
			{
				outputs.insert(output + 1);
			}
		}
	}
	return inMatrix;
}

} // namespace

int AudioPannerMonoToAdaptive::Create(AutomatedPannerSettings const& inSettings, int inOutputChannels,
	AudioChannelMatrix const& inMatrix, InterfaceRef<IAudioPanProcessor>* outProcessor)
{
	auto const layout = zorvmediatypes::CreateMultichannelLayout(inOutputChannels);
	return CreatePanner(zorvcore::classref::MakeObject<AudioPannerMonoToAdaptive>(layout), outProcessor,
		inSettings, FeedWholePairs(inMatrix), StackAudioBufferTags::kAudioPannerMonoToAdaptive);
}

AudioPannerMonoToAdaptive::AudioPannerMonoToAdaptive(AudioChannelLayout const& inOutputLayout)
	: AdaptivePanner(u"AudioPannerMonoToAdaptive", VX::kAudioChannelTypeMono, 0, inOutputLayout)
{
}

InterfaceRef<IAudioPanProcessor> AudioPannerMonoToAdaptive::Clone(
	FrameRate const& inFrameRate, unsigned inControlInterval)
{
	auto const clone =
		zorvcore::classref::MakeObject<AudioPannerMonoToAdaptive>(GetOutputAudioChannelLayout());
	clone->CopyFrom(*this, inFrameRate, inControlInterval);
	return clone;
}

} // namespace SN
