#include "Panner/AudioPannerMonoTo51Direct.h"

namespace SN
{

AudioPannerMonoTo51Direct::AudioPannerMonoTo51Direct()
	: PannerClass(u"AudioPannerMonoTo51Direct", VX::kAudioChannelTypeMono, VX::kAudioChannelType51)
{
}

int AudioPannerMonoTo51Direct::Init(
	AutomatedPannerSettings const& inSettings, AudioChannelMatrix const& inMatrix)
{
	AudioPannerDirectChannelAssignmentBase::Init(inMatrix, GetOutputAudioChannelLayout());
	return AutomatedPanner::Init(inSettings, 4);
}

void AudioPannerMonoTo51Direct::CopyFrom(
	AudioPannerMonoTo51Direct const& inOther, FrameRate const& inFrameRate, unsigned inControlInterval)
{
	AutomatedPanner::CopyFrom(inOther, inFrameRate, inControlInterval);
	AudioPannerDirectChannelAssignmentBase::Init(inOther.GetMatrix(), inOther.GetOutputLayout());
}

void AudioPannerMonoTo51Direct::ProcessAudioData(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, TickTime const&)
{
	Process(inInput, outOutput);
}

} // namespace SN
