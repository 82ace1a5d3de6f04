#pragma once

#include "Panner/StereoPanner.h"

namespace SN
{

// Places one channel between left and right with equal power.
class AudioPannerMonoToStereo final : public StereoPanner
{
public:
	static int Create(
		AutomatedPannerSettings const& inSettings, InterfaceRef<IAudioPanProcessor>* outProcessor);

	AudioPannerMonoToStereo();

	InterfaceRef<IAudioPanProcessor> Clone(FrameRate const& inFrameRate, unsigned inControlInterval) override;
};

} // namespace SN
