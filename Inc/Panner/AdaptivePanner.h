#pragma once

#include "Panner/Algorithm/AudioPannerDirectChannelAssignmentBase.h"
#include "Panner/StereoPanner.h"

namespace SN
{

// The base of panners that place a mono or stereo signal on the channels of an adaptive track. The routing
// says which outputs sound; position alone says which side they are: even ones left, odd ones right. The side
// that is panned to keeps its level.
//
// The ramp of a side runs once in a block, for the first of its channels; the others are copies of that one.
class AdaptivePanner : public StereoPanner, public AudioPannerDirectChannelAssignmentBase
{
public:
	// eInvalidArgument also for more channels than a buffer has.
	int Init(
		AutomatedPannerSettings const& inSettings, int inOutputChannels, AudioChannelMatrix const& inMatrix);

protected:
	// inRightInput: the input channel that the right side hears. inTag: the tag of the scratch memory that is set
	// aside for the output's channels.
	AdaptivePanner(char16_t const* inNodeName, AudioChannelType inInputType, unsigned long long inRightInput,
		ImmutableString const& inTag);

	void CopyFrom(AdaptivePanner const& inOther, FrameRate const& inFrameRate, unsigned inControlInterval);
	void PlaceChannels(
		dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput) SONARO_NONBLOCKING override;

private:
	// One side of the output in one block.
	struct Side
	{
		dsp::GainRamp& mRamp;
		unsigned long long mInput;
		// The output channel that the ramp ran for; none yet above the largest channel.
		unsigned long long mMaster;
	};

	static void PlaceChannel(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
		unsigned long long inChannel, Side& ioSide);

	ImmutableString mTag;
};

} // namespace SN
