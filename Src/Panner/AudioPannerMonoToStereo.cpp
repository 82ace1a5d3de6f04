#include "Panner/AudioPannerMonoToStereo.h"

#include "Panner/CreatePanner.h"

namespace SN
{

int AudioPannerMonoToStereo::Create(
	AutomatedPannerSettings const& inSettings, InterfaceRef<IAudioPanProcessor>* outProcessor)
{
	return CreatePanner<AudioPannerMonoToStereo>(outProcessor, inSettings);
}

AudioPannerMonoToStereo::AudioPannerMonoToStereo()
	: StereoPanner(u"AudioPannerMonoToStereo", VX::kAudioChannelTypeMono, &GetEqualPowerGains, 0)
{
}

InterfaceRef<IAudioPanProcessor> AudioPannerMonoToStereo::Clone(
	FrameRate const& inFrameRate, unsigned inControlInterval)
{
	auto const clone = zorvcore::classref::MakeObject<AudioPannerMonoToStereo>();
	clone->CopyFrom(*this, inFrameRate, inControlInterval);
	return clone;
}

} // namespace SN
