#pragma once

#include "Panner/Algorithm/StereoPanRamps.h"
#include "Panner/AutomatedPanner.h"

namespace SN
{

// The base of panners to stereo with one control, the pan: 0 left, 0.5 middle, 1 right. A new pan is
// reached in a ramp of 5 ms, and of 15 ms once the playhead has jumped; a jump itself has no ramp.
class StereoPanner : public AutomatedPanner
{
public:
	// eFailure for another count of controls than one.
	int Init(AutomatedPannerSettings const& inSettings);

	void ProcessAudioData(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
		TickTime const& inTime) SONARO_NONBLOCKING override;

protected:
	// inRightInput: the input channel that the right side hears.
	StereoPanner(char16_t const* inNodeName, AudioChannelType inInputType, StereoPanRamps::Law inLaw,
		unsigned long long inRightInput);

	void CopyFrom(StereoPanner const& inOther, FrameRate const& inFrameRate, unsigned inControlInterval);

private:
	StereoPanRamps mRamps;
	unsigned long long mRightInput;
};

} // namespace SN
