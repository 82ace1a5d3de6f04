#pragma once

#include "Panner/PanProcessorBase.h"
#include "Panner/PannerClass.h"
#include "Sonaro/AudioChannelMix.h"
#include "zorvaudiodsp/AudioBuffer.h"

namespace SN
{

// A panner without controls: the conversion between the layouts of two types, as it stood when the panner was made.
// So 5.1 is folded by the mixdown that was set then, and stereo to the mean of left and right.
class FixedMixPanner final : public PannerClass<FixedMixPanner, PanProcessorBase>
{
public:
	// eNullPointer without a context, eInvalidArgument for the invalid rate.
	int Init(char16_t const* inNodeName, AudioChannelType inInputType, AudioChannelType inOutputType,
		InterfaceRef<IAudioRenderContext> const& inContext, FrameRate const& inFrameRate)
	{
		SetShape({inNodeName, inInputType, inOutputType, VX::CreateAudioChannelLayout(inInputType),
			VX::CreateAudioChannelLayout(inOutputType)});
		mMix = AudioChannelMix::GetMixFunction(GetInputAudioChannelLayout(), GetOutputAudioChannelLayout());
		return AudioRenderContextClient::Init(inContext, inFrameRate);
	}

	void CopyFrom(FixedMixPanner const& inOther, FrameRate const& inFrameRate, unsigned inControlInterval)
	{
		PanProcessorBase::CopyFrom(inOther, inFrameRate, inControlInterval);
		mMix = inOther.mMix;
	}

	void ProcessAudioData(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
		TickTime const&) SONARO_NONBLOCKING override
	{
		if (inInput.IsSilent())
		{
			outOutput.Zero();
			return;
		}
		// It clears the flags of what it writes.
		mMix(inInput, outOutput);
	}

private:
	AudioChannelMix::MixFunction mMix;
};

} // namespace SN
