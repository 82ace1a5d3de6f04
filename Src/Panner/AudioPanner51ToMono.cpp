#include "Panner/AudioPanner51ToMono.h"

#include "Panner/CreatePanner.h"

namespace SN
{

int AudioPanner51ToMono::Create(InterfaceRef<IAudioRenderContext> const& inContext,
	FrameRate const& inFrameRate, InterfaceRef<IAudioPanProcessor>* outProcessor)
{
	return CreatePanner<AudioPanner51ToMono>(outProcessor, inContext, inFrameRate);
}

AudioPanner51ToMono::AudioPanner51ToMono()
	: FixedMixPanner(u"AudioPanner51ToMono", VX::kAudioChannelType51, VX::kAudioChannelTypeMono)
{
}

InterfaceRef<IAudioPanProcessor> AudioPanner51ToMono::Clone(FrameRate const&, unsigned)
{
	auto const clone = zorvcore::classref::MakeObject<AudioPanner51ToMono>();
	clone->CopyFrom(*this);
	return clone;
}

} // namespace SN
