#pragma once

#include "Panner/StereoPanner.h"

namespace SN
{

// Balances left and right: the side that is panned to keeps its level.
class AudioPannerStereoToStereo final : public StereoPanner
{
public:
	static int Create(
		AutomatedPannerSettings const& inSettings, InterfaceRef<IAudioPanProcessor>* outProcessor);

	AudioPannerStereoToStereo();

	InterfaceRef<IAudioPanProcessor> Clone(FrameRate const& inFrameRate, unsigned inControlInterval) override;
	// True when the pan has no keyframes and stands in the middle, as last sampled.
	bool DoesNotAlterAudio() SONARO_NONBLOCKING override;
};

} // namespace SN
