#pragma once

#include "Panner/PanProcessorBase.h"
#include "Sonaro/AudioChannelMix.h"

namespace SN
{

// The base of panners without controls: the conversion between two layouts, as it stood when the panner
// was made.
class FixedMixPanner : public PanProcessorBase
{
public:
	void ProcessAudioData(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
		TickTime const& inTime) SONARO_NONBLOCKING override;

	// eNullPointer without a context, eInvalidArgument for the invalid rate.
	int Init(InterfaceRef<IAudioRenderContext> const& inContext, FrameRate const& inFrameRate);

protected:
	using PanProcessorBase::PanProcessorBase;

	void CopyFrom(FixedMixPanner const& inOther, FrameRate const& inFrameRate, unsigned inControlInterval);

private:
	AudioChannelMix::MixFunction mMix;
};

} // namespace SN
