#pragma once

#include "Panner/Algorithm/StereoPanRamps.h"
#include "Panner/AutomatedPanner.h"

namespace SN
{

// The base of panners with one control, the pan: 0 left, 0.5 middle, 1 right. A new pan is reached in a ramp of
// 5 ms, and of 15 ms once the playhead has jumped; a jump itself has no ramp. The output is stereo unless a class
// places its channels otherwise.
class StereoPanner : public AutomatedPanner
{
public:
	// eFailure for another count of controls than inParameterCount.
	int Init(AutomatedPannerSettings const& inSettings, std::size_t inParameterCount = 1);

	void ProcessAudioData(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
		TickTime const& inTime) SONARO_NONBLOCKING override;

protected:
	// inRightInput: the input channel that the right side hears.
	StereoPanner(char16_t const* inNodeName, AudioChannelType inInputType, StereoPanRamps::Law inLaw,
		unsigned long long inRightInput, AudioChannelType inOutputType = VX::kAudioChannelTypeStereo);

	void CopyFrom(StereoPanner const& inOther, FrameRate const& inFrameRate, unsigned inControlInterval);

	// Fills the channels of an input that is not silent. Each ramp runs once, or stands still.
	virtual void PlaceChannels(
		dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput) SONARO_NONBLOCKING;

	StereoPanRamps mRamps;
	unsigned long long const mRightInput;
};

} // namespace SN
