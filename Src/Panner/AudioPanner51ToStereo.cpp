#include "Panner/AudioPanner51ToStereo.h"

#include "Panner/CreatePanner.h"

namespace SN
{

int AudioPanner51ToStereo::Create(InterfaceRef<IAudioRenderContext> const& inContext,
	FrameRate const& inFrameRate, InterfaceRef<IAudioPanProcessor>* outProcessor)
{
	return CreatePanner<AudioPanner51ToStereo>(outProcessor, inContext, inFrameRate);
}

AudioPanner51ToStereo::AudioPanner51ToStereo()
	: FixedMixPanner(u"AudioPanner51ToStereo", VX::kAudioChannelType51, VX::kAudioChannelTypeStereo)
{
}

InterfaceRef<IAudioPanProcessor> AudioPanner51ToStereo::Clone(FrameRate const&, unsigned)
{
	auto const clone = zorvcore::classref::MakeObject<AudioPanner51ToStereo>();
	clone->CopyFrom(*this);
	return clone;
}

} // namespace SN
