#pragma once

#include "Panner/PannerClass.h"
#include "Panner/SurroundPanner.h"

namespace SN
{

// Places one channel in the field of 5.1: pairs of equal power in front and in the rear. Controls that are
// missing stand at 0.
class AudioPannerMonoTo51 final : public PannerClass<AudioPannerMonoTo51, SurroundPanner>
{
public:
	AudioPannerMonoTo51();

protected:
	void PlaceChannels(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput) override;
};

} // namespace SN
