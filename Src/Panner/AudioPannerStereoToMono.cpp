#include "Panner/AudioPannerStereoToMono.h"

#include "Panner/CreatePanner.h"

namespace SN
{

int AudioPannerStereoToMono::Create(InterfaceRef<IAudioRenderContext> const& inContext,
	FrameRate const& inFrameRate, InterfaceRef<IAudioPanProcessor>* outProcessor)
{
	return CreatePanner<AudioPannerStereoToMono>(outProcessor, inContext, inFrameRate);
}

AudioPannerStereoToMono::AudioPannerStereoToMono()
	: FixedMixPanner(u"AudioPannerStereoToMono", VX::kAudioChannelTypeStereo, VX::kAudioChannelTypeMono)
{
}

InterfaceRef<IAudioPanProcessor> AudioPannerStereoToMono::Clone(FrameRate const&, unsigned)
{
	auto const clone = zorvcore::classref::MakeObject<AudioPannerStereoToMono>();
	clone->CopyFrom(*this);
	return clone;
}

} // namespace SN
