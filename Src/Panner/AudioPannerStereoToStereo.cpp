#include "Panner/AudioPannerStereoToStereo.h"

#include "Panner/CreatePanner.h"

namespace SN
{

int AudioPannerStereoToStereo::Create(
	AutomatedPannerSettings const& inSettings, InterfaceRef<IAudioPanProcessor>* outProcessor)
{
	return CreatePanner<AudioPannerStereoToStereo>(outProcessor, inSettings);
}

AudioPannerStereoToStereo::AudioPannerStereoToStereo()
	: StereoPanner(u"AudioPannerStereoToStereo", VX::kAudioChannelTypeStereo, &GetSideKeepingGains, 1)
{
}

InterfaceRef<IAudioPanProcessor> AudioPannerStereoToStereo::Clone(
	FrameRate const& inFrameRate, unsigned inControlInterval)
{
	auto const clone = zorvcore::classref::MakeObject<AudioPannerStereoToStereo>();
	clone->CopyFrom(*this, inFrameRate, inControlInterval);
	return clone;
}

bool AudioPannerStereoToStereo::DoesNotAlterAudio()
{
	return GetParameterCount() > 0 && StandsAt(0, 0.5f);
}

} // namespace SN
