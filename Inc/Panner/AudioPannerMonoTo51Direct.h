#pragma once

#include "Panner/Algorithm/AudioPannerDirectChannelAssignmentBase.h"
#include "Panner/AutomatedPanner.h"
#include "Panner/PannerClass.h"

namespace SN
{

// One channel on those of 5.1 that a routing names, at full level. Its four controls are kept and
// sampled, and have no effect.
class AudioPannerMonoTo51Direct final : public PannerClass<AudioPannerMonoTo51Direct, AutomatedPanner>,
										public AudioPannerDirectChannelAssignmentBase
{
public:
	AudioPannerMonoTo51Direct()
		: PannerClass(u"AudioPannerMonoTo51Direct", VX::kAudioChannelTypeMono, VX::kAudioChannelType51)
	{
	}

	// eFailure for another count of controls than four.
	int Init(AutomatedPannerSettings const& inSettings, AudioChannelMatrix const& inMatrix)
	{
		AudioPannerDirectChannelAssignmentBase::Init(inMatrix, GetOutputAudioChannelLayout());
		return AutomatedPanner::Init(inSettings, 4);
	}
	void CopyFrom(
		AudioPannerMonoTo51Direct const& inOther, FrameRate const& inFrameRate, unsigned inControlInterval)
	{
		AutomatedPanner::CopyFrom(inOther, inFrameRate, inControlInterval);
		AudioPannerDirectChannelAssignmentBase::Init(inOther.GetMatrix(), inOther.GetOutputLayout());
	}

	void ProcessAudioData(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
		TickTime const&) SONARO_NONBLOCKING override
	{
		Process(inInput, outOutput);
	}
};

} // namespace SN
