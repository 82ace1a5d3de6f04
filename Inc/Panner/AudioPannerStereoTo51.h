#pragma once

#include "Panner/PannerClass.h"
#include "Panner/SurroundPanner.h"

namespace SN
{

// Places left and right in the field of 5.1, each on its own side in front and in the rear; the centre
// gets their mean.
class AudioPannerStereoTo51 final : public PannerClass<AudioPannerStereoTo51, SurroundPanner>
{
public:
	// It takes four controls.
	AudioPannerStereoTo51();

protected:
	void PlaceChannels(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput) override;

private:
	LowFrequencyFeed GetFeed(dsp::AudioBuffer const& inInput);

	// What each input gives to the low frequency channel, and the X that it is for.
	float mLfeLeftGain = 0.0f;
	float mLfeRightGain = 0.0f;
	float mLfeX = -1.0f;
};

} // namespace SN
