#pragma once

#include "Panner/Algorithm/StereoPanRamps.h"
#include "Panner/AutomatedPanner.h"

namespace SN
{

// Balances left and right: the side that is panned to keeps its level. One control, the pan:
// 0 left, 0.5 middle, 1 right. A new pan is reached over 5 ms, after the first jump of the playhead over
// 15 ms; at a jump the gains stand at once.
class AudioPannerStereoToStereo final : public AutomatedPanner
{
public:
	// eFailure for another count of controls than one.
	static int Create(
		AutomatedPannerSettings const& inSettings, InterfaceRef<IAudioPanProcessor>* outProcessor);

	AudioPannerStereoToStereo();

	int Init(AutomatedPannerSettings const& inSettings);

	InterfaceRef<IAudioPanProcessor> Clone(FrameRate const& inFrameRate, unsigned inControlInterval) override;
	// True when the pan has no keyframes and stands in the middle, as last sampled.
	bool DoesNotAlterAudio() override;
	void ProcessAudioData(
		dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, TickTime const& inTime) override;

private:
	StereoPanRamps mRamps{&GetSideKeepingGains};
};

} // namespace SN
