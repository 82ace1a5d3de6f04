#pragma once

#include "Panner/AdaptivePanner.h"
#include "Panner/PannerClass.h"

namespace SN
{

// One channel on an adaptive track. Where the routing names the left channel of a pair for its first
// input, it feeds the whole pair.
class AudioPannerMonoToAdaptive final : public PannerClass<AudioPannerMonoToAdaptive, AdaptivePanner>
{
public:
	AudioPannerMonoToAdaptive();

	int Init(AutomatedPannerSettings const& inSettings, int inOutputChannels, AudioChannelMatrix inMatrix);
};

} // namespace SN
