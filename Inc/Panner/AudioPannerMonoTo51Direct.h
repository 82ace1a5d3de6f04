#pragma once

#include "Panner/Algorithm/AudioPannerDirectChannelAssignmentBase.h"
#include "Panner/AutomatedPanner.h"

namespace SN
{

// One channel on those of 5.1 that a routing names, at full level. Its four controls are kept and
// sampled, and have no effect.
class AudioPannerMonoTo51Direct final : public AutomatedPanner, public AudioPannerDirectChannelAssignmentBase
{
public:
	// eFailure for another count of controls than four.
	static int Create(AutomatedPannerSettings const& inSettings, AudioChannelMatrix const& inMatrix,
		InterfaceRef<IAudioPanProcessor>* outProcessor);

	AudioPannerMonoTo51Direct();

	int Init(AutomatedPannerSettings const& inSettings, AudioChannelMatrix const& inMatrix);

	InterfaceRef<IAudioPanProcessor> Clone(FrameRate const& inFrameRate, unsigned inControlInterval) override;
	void ProcessAudioData(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
		TickTime const& inTime) SONARO_NONBLOCKING override;
};

} // namespace SN
