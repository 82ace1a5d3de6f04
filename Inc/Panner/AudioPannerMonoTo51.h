#pragma once

#include "Panner/SurroundPanner.h"

namespace SN
{

// Places one channel in the field of 5.1: pairs of equal power in front and in the rear. Controls that are
// missing stand at 0.
class AudioPannerMonoTo51 final : public SurroundPanner
{
public:
	static int Create(
		AutomatedPannerSettings const& inSettings, InterfaceRef<IAudioPanProcessor>* outProcessor);

	AudioPannerMonoTo51();

	int Init(AutomatedPannerSettings const& inSettings);

	InterfaceRef<IAudioPanProcessor> Clone(FrameRate const& inFrameRate, unsigned inControlInterval) override;

protected:
	void PlaceChannels(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput) override;
};

} // namespace SN
