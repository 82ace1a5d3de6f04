#pragma once

#include "Panner/FixedMixPanner.h"
#include "Panner/PannerClass.h"

namespace SN
{

// The mean of left and right.
class AudioPannerStereoToMono final : public PannerClass<AudioPannerStereoToMono, FixedMixPanner>
{
public:
	AudioPannerStereoToMono()
		: PannerClass(u"AudioPannerStereoToMono", VX::kAudioChannelTypeStereo, VX::kAudioChannelTypeMono)
	{
	}
};

} // namespace SN
