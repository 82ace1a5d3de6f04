#include "AudioRender/Component/AudioMeterRenderer.h"

namespace SN
{

int AudioMeterRenderer::Create(InterfaceRef<IAudioRenderContext> const& inContext,
	FrameRate const& inFrameRate, InterfaceRef<IAudioMeterSetter> const& inMeter,
	InterfaceRef<IAudioProcessor>* outProcessor)
{
	if (!inContext)
	{
		return eNullPointer;
	}
	auto const renderer = zorvcore::classref::MakeObject<AudioMeterRenderer>();
	int const result = renderer->AudioRenderContextClient::Init(inContext, inFrameRate);
	if (!inContext->IsNotTopLevelPlayback())
	{
		renderer->mMeter = inMeter;
	}
	if (ResultSucceeded(result))
	{
		*outProcessor = renderer;
	}
	return result;
}

InterfaceRef<IAudioProcessor> AudioMeterRenderer::Clone(FrameRate const&, unsigned, unsigned)
{
	auto const clone = StartClone(*this);
	clone->mMeter = mMeter;
	return clone;
}

void AudioMeterRenderer::ProcessAudioData(dsp::AudioBuffer& inBuffer, TickTime const& inTime)
{
	if (mMeter)
	{
		mMeter->SetMeterData(inBuffer, inTime);
	}
}

void AudioMeterRenderer::Reset()
{
	if (mMeter)
	{
		mMeter->Reset();
	}
}

} // namespace SN
