#include "Panner/AudioPannerMonoToAdaptive.h"

#include "AudioRender/Core/StackAudioBufferTags.h"
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
	auto const panner = zorvcore::classref::MakeObject<AudioPannerMonoToAdaptive>(
		zorvmediatypes::CreateMultichannelLayout(inOutputChannels));
	int const result =
		panner->Init(inSettings, FeedWholePairs(inMatrix), StackAudioBufferTags::kAudioPannerMonoToAdaptive);
	if (ResultSucceeded(result))
	{
		*outProcessor = panner;
	}
	return result;
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
