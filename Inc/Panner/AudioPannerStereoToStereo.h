#pragma once

#include "Panner/PannerClass.h"
#include "Panner/StereoPanner.h"

namespace SN
{

// Balances left and right: the side that is panned to keeps its level.
class AudioPannerStereoToStereo final : public PannerClass<AudioPannerStereoToStereo, StereoPanner>
{
public:
	AudioPannerStereoToStereo()
		: PannerClass(u"AudioPannerStereoToStereo", VX::kAudioChannelTypeStereo, &GetSideKeepingGains, 1)
	{
	}

	// True when the pan has no keyframes and stands in the middle, as last sampled.
	bool DoesNotAlterAudio() SONARO_NONBLOCKING override
	{
		return GetParameterCount() > 0 && StandsAt(0, 0.5f);
	}
};

} // namespace SN
