#pragma once

#include "Panner/AutomatedPanner.h"

namespace SN
{

// Copies channels between any two layouts: each input of the routing to the first output that it names,
// or straight by position when the routing has not as many entries as the smaller layout has channels.
// Its controls are kept and sampled, and have no effect.
class AudioPannerDefaultMultiChannel final : public AutomatedPanner
{
public:
	static int Create(AutomatedPannerSettings const& inSettings, AudioChannelMatrix const& inMatrix,
		AudioChannelLayout const& inInputLayout, AudioChannelLayout const& inOutputLayout,
		InterfaceRef<IAudioPanProcessor>* outProcessor);

	AudioPannerDefaultMultiChannel(AudioChannelLayout const& inInputLayout,
		AudioChannelLayout const& inOutputLayout, AudioChannelMatrix const& inMatrix);

	InterfaceRef<IAudioPanProcessor> Clone(FrameRate const& inFrameRate, unsigned inControlInterval) override;
	void ProcessAudioData(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
		TickTime const& inTime) SONARO_NONBLOCKING override;

private:
	AudioChannelMatrix mMatrix;
};

} // namespace SN
