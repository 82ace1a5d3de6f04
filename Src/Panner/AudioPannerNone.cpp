#include "Panner/AudioPannerNone.h"

namespace SN
{

int AudioPannerNone::Create(InterfaceRef<IAudioRenderContext> const& inContext,
	AudioChannelLayout const& inLayout, InterfaceRef<IAudioPanProcessor>* outProcessor)
{
	if (!inContext)
	{
		return eNullPointer;
	}
	auto const panner = zorvcore::classref::MakeObject<AudioPannerNone>(inLayout);
	// It has no rate: nothing that it does takes time.
	panner->AudioRenderContextClient::Init(inContext, FrameRate());
	*outProcessor = panner;
	return kSuccess;
}

AudioPannerNone::AudioPannerNone(AudioChannelLayout const& inLayout)
	: PanProcessorBase(u"AudioPannerNone", inLayout, inLayout)
{
}

InterfaceRef<IAudioPanProcessor> AudioPannerNone::Clone(FrameRate const&, unsigned)
{
	auto const clone = StartClone(*this, GetInputAudioChannelLayout());
	return clone;
}

} // namespace SN
