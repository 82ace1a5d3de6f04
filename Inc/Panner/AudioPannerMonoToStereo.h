#pragma once

#include "Panner/Algorithm/StereoPanRamps.h"
#include "Panner/AutomatedPanner.h"

namespace SN
{

// Places one channel between left and right with equal power. One control, the pan:
// 0 left, 0.5 middle, 1 right. A new pan is reached over 5 ms, after the first jump of the playhead over
// 15 ms; at a jump the gains stand at once.
class AudioPannerMonoToStereo final : public AutomatedPanner
{
public:
	// eFailure for another count of controls than one.
	static int Create(
		AutomatedPannerSettings const& inSettings, InterfaceRef<IAudioPanProcessor>* outProcessor);

	AudioPannerMonoToStereo();

	int Init(AutomatedPannerSettings const& inSettings);

	InterfaceRef<IAudioPanProcessor> Clone(FrameRate const& inFrameRate, unsigned inControlInterval) override;
	void ProcessAudioData(
		dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, TickTime const& inTime) override;

private:
	StereoPanRamps mRamps{&GetEqualPowerGains};
};

} // namespace SN
