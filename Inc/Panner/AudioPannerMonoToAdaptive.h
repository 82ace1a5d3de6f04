#pragma once

#include "Panner/AdaptivePanner.h"

namespace SN
{

// One channel on an adaptive track. Where the routing names the left channel of a pair for its first
// input, it feeds the whole pair.
class AudioPannerMonoToAdaptive final : public AdaptivePanner
{
public:
	static int Create(AutomatedPannerSettings const& inSettings, int inOutputChannels,
		AudioChannelMatrix const& inMatrix, InterfaceRef<IAudioPanProcessor>* outProcessor);

	explicit AudioPannerMonoToAdaptive(AudioChannelLayout const& inOutputLayout);

	InterfaceRef<IAudioPanProcessor> Clone(FrameRate const& inFrameRate, unsigned inControlInterval) override;
};

} // namespace SN
