#pragma once

#include "Panner/PannerClass.h"
#include "Panner/StereoPanner.h"

namespace SN
{

// Places one channel between left and right with equal power.
class AudioPannerMonoToStereo final : public PannerClass<AudioPannerMonoToStereo, StereoPanner>
{
public:
	AudioPannerMonoToStereo()
		: PannerClass(u"AudioPannerMonoToStereo", VX::kAudioChannelTypeMono, &GetEqualPowerGains, 0)
	{
	}
};

} // namespace SN
