#include "Panner/AudioPannerMonoTo51Direct.h"

#include "Panner/CreatePanner.h"

namespace SN
{

int AudioPannerMonoTo51Direct::Create(AutomatedPannerSettings const& inSettings,
	AudioChannelMatrix const& inMatrix, InterfaceRef<IAudioPanProcessor>* outProcessor)
{
	return CreatePanner<AudioPannerMonoTo51Direct>(outProcessor, inSettings, inMatrix);
}

AudioPannerMonoTo51Direct::AudioPannerMonoTo51Direct()
	: AutomatedPanner(u"AudioPannerMonoTo51Direct", VX::kAudioChannelTypeMono, VX::kAudioChannelType51)
{
}

int AudioPannerMonoTo51Direct::Init(
	AutomatedPannerSettings const& inSettings, AudioChannelMatrix const& inMatrix)
{
	AudioPannerDirectChannelAssignmentBase::Init(inMatrix, GetOutputAudioChannelLayout());
	return AutomatedPanner::Init(inSettings, 4);
}

InterfaceRef<IAudioPanProcessor> AudioPannerMonoTo51Direct::Clone(
	FrameRate const& inFrameRate, unsigned inControlInterval)
{
	auto const clone = zorvcore::classref::MakeObject<AudioPannerMonoTo51Direct>();
	clone->CopyFrom(*this, inFrameRate, inControlInterval);
	clone->AudioPannerDirectChannelAssignmentBase::Init(GetMatrix(), GetOutputLayout());
	return clone;
}

void AudioPannerMonoTo51Direct::ProcessAudioData(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, TickTime const&)
{
	Process(inInput, outOutput);
}

} // namespace SN
