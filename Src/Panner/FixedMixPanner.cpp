#include "Panner/FixedMixPanner.h"

#include "zorvaudiodsp/AudioBuffer.h"

namespace SN
{

void FixedMixPanner::ProcessAudioData(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, TickTime const&)
{
	if (inInput.IsSilent())
	{
		outOutput.Zero();
		return;
	}
	// It clears the flags of what it writes.
	mMix(inInput, outOutput);
}

int FixedMixPanner::Init(char16_t const* inNodeName, AudioChannelType inInputType,
	AudioChannelType inOutputType, InterfaceRef<IAudioRenderContext> const& inContext,
	FrameRate const& inFrameRate)
{
	SetShape({inNodeName, inInputType, inOutputType, VX::CreateAudioChannelLayout(inInputType),
		VX::CreateAudioChannelLayout(inOutputType)});
	mMix = AudioChannelMix::GetMixFunction(GetInputAudioChannelLayout(), GetOutputAudioChannelLayout());
	return AudioRenderContextClient::Init(inContext, inFrameRate);
}

void FixedMixPanner::CopyFrom(
	FixedMixPanner const& inOther, FrameRate const& inFrameRate, unsigned inControlInterval)
{
	PanProcessorBase::CopyFrom(inOther, inFrameRate, inControlInterval);
	mMix = inOther.mMix;
}

} // namespace SN
