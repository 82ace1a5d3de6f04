#pragma once

#include "Panner/SurroundPanner.h"

namespace SN
{

// Places left and right in the field of 5.1, each on its own side in front and in the rear; the centre
// gets their mean.
class AudioPannerStereoTo51 final : public SurroundPanner
{
public:
	// eFailure for another count of controls than four.
	static int Create(
		AutomatedPannerSettings const& inSettings, InterfaceRef<IAudioPanProcessor>* outProcessor);

	AudioPannerStereoTo51();

	int Init(AutomatedPannerSettings const& inSettings);

	InterfaceRef<IAudioPanProcessor> Clone(FrameRate const& inFrameRate, unsigned inControlInterval) override;

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
