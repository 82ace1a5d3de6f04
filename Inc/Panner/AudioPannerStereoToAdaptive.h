#pragma once

#include "Panner/AdaptivePanner.h"

namespace SN
{

// Left and right on an adaptive track, by the routing as it is given.
class AudioPannerStereoToAdaptive final : public AdaptivePanner
{
public:
	static int Create(AutomatedPannerSettings const& inSettings, int inOutputChannels,
		AudioChannelMatrix const& inMatrix, InterfaceRef<IAudioPanProcessor>* outProcessor);

	explicit AudioPannerStereoToAdaptive(AudioChannelLayout const& inOutputLayout);

	InterfaceRef<IAudioPanProcessor> Clone(FrameRate const& inFrameRate, unsigned inControlInterval) override;
};

} // namespace SN
