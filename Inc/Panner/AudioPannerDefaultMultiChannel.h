#pragma once

#include "Panner/AutomatedPanner.h"
#include "Panner/PannerClass.h"

namespace SN
{

// Copies channels between any two layouts: each input of the routing to the first output that it names,
// or straight by position when the routing has not as many entries as the smaller layout has channels.
// Its controls are kept and sampled, and have no effect.
class AudioPannerDefaultMultiChannel final
	: public PannerClass<AudioPannerDefaultMultiChannel, AutomatedPanner>
{
public:
	int Init(AutomatedPannerSettings const& inSettings, AudioChannelMatrix const& inMatrix,
		AudioChannelLayout const& inInputLayout, AudioChannelLayout const& inOutputLayout);
	void CopyFrom(AudioPannerDefaultMultiChannel const& inOther, FrameRate const& inFrameRate,
		unsigned inControlInterval);

	void ProcessAudioData(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
		TickTime const& inTime) SONARO_NONBLOCKING override;

private:
	AudioChannelMatrix mMatrix;
};

} // namespace SN
