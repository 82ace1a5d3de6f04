#include "Panner/AudioPannerMonoToAdaptive.h"

#include "AudioRender/Core/StackAudioBufferTags.h"

namespace SN
{

AudioPannerMonoToAdaptive::AudioPannerMonoToAdaptive()
	: PannerClass(u"AudioPannerMonoToAdaptive", VX::kAudioChannelTypeMono, 0,
		  StackAudioBufferTags::kAudioPannerMonoToAdaptive)
{
}

int AudioPannerMonoToAdaptive::Init(
	AutomatedPannerSettings const& inSettings, int inOutputChannels, AudioChannelMatrix inMatrix)
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
	return AdaptivePanner::Init(inSettings, inOutputChannels, inMatrix);
}

} // namespace SN
