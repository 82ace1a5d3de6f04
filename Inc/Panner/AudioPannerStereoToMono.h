#pragma once

#include "Panner/FixedMixPanner.h"

namespace SN
{

// The mean of left and right.
class AudioPannerStereoToMono final : public FixedMixPanner
{
public:
	static int Create(InterfaceRef<IAudioRenderContext> const& inContext, FrameRate const& inFrameRate,
		InterfaceRef<IAudioPanProcessor>* outProcessor);

	AudioPannerStereoToMono();

	InterfaceRef<IAudioPanProcessor> Clone(FrameRate const& inFrameRate, unsigned inControlInterval) override;
};

} // namespace SN
