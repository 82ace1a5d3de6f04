#pragma once

#include "Panner/Algorithm/AudioPannerDirectChannelAssignmentBase.h"
#include "Panner/Algorithm/StereoPanRamps.h"
#include "Panner/AutomatedPanner.h"

namespace SN
{

// The base of panners that place a mono or stereo signal on the channels of an adaptive track. The routing
// says which outputs sound; position alone says which side they are: even ones left, odd ones right. One
// control, the pan: 0 left, 0.5 middle, 1 right, where the side that is panned to keeps its level.
//
// Gains are reached as in the stereo panners. The ramp of a side runs once in a block, for the first of
// its channels; the others are copies of that one.
class AdaptivePanner : public AutomatedPanner, public AudioPannerDirectChannelAssignmentBase
{
public:
	// eInvalidArgument also for more channels than a buffer has.
	int Init(
		AutomatedPannerSettings const& inSettings, int inOutputChannels, AudioChannelMatrix const& inMatrix);

	void ProcessAudioData(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
		TickTime const& inTime) SONARO_NONBLOCKING override;

protected:
	// inRightInput: the input channel that the right side hears. inTag: the tag of the scratch memory that is set
	// aside for the output's channels.
	AdaptivePanner(char16_t const* inNodeName, AudioChannelType inInputType, unsigned long long inRightInput,
		ImmutableString const& inTag);

	void CopyFrom(AdaptivePanner const& inOther, FrameRate const& inFrameRate, unsigned inControlInterval);

private:
	// One side of the output in one block.
	struct Side
	{
		dsp::GainRamp& mRamp;
		unsigned long long mInput;
		// The output channel that the ramp ran for; none yet above the largest channel.
		unsigned long long mMaster;
	};

	void PlaceChannels(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput);
	static void PlaceChannel(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
		unsigned long long inChannel, Side& ioSide);

	unsigned long long mRightInput;
	ImmutableString mTag;
	StereoPanRamps mRamps{&GetSideKeepingGains};
};

} // namespace SN
