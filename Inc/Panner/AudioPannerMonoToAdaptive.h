#pragma once

#include "AudioRender/Core/StackAudioBufferTags.h"
#include "Panner/AdaptivePanner.h"
#include "Panner/PannerClass.h"

namespace SN
{

// One channel on an adaptive track. Where the routing names the left channel of a pair for its first
// input, it feeds the whole pair.
class AudioPannerMonoToAdaptive final : public PannerClass<AudioPannerMonoToAdaptive, AdaptivePanner>
{
public:
	AudioPannerMonoToAdaptive()
		: PannerClass(u"AudioPannerMonoToAdaptive", VX::kAudioChannelTypeMono, 0,
			  StackAudioBufferTags::kAudioPannerMonoToAdaptive)
	{
	}

	int Init(AutomatedPannerSettings const& inSettings, int inOutputChannels, AudioChannelMatrix inMatrix)
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
};

} // namespace SN
