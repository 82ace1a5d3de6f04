#include "Panner/AdaptivePanner.h"

#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvmediatypes/AudioChannelLayout.h"

namespace SN
{

namespace
{

constexpr unsigned long long kNoMaster = ~0ull;

} // namespace

AdaptivePanner::AdaptivePanner(char16_t const* inNodeName, AudioChannelType inInputType,
	unsigned long long inRightInput, ImmutableString const& inTag)
	: StereoPanner(
		  inNodeName, inInputType, &GetSideKeepingGains, inRightInput, VX::kAudioChannelTypeAdaptive),
	  mTag(inTag)
{
}

int AdaptivePanner::Init(
	AutomatedPannerSettings const& inSettings, int inOutputChannels, AudioChannelMatrix const& inMatrix)
{
	SetOutputLayout(zorvmediatypes::CreateMultichannelLayout(inOutputChannels));
	AudioPannerDirectChannelAssignmentBase::Init(inMatrix, GetOutputAudioChannelLayout());
	int const result = StereoPanner::Init(inSettings, kAnyParameterCount);
	if (ResultSucceeded(result) && GetNumOutputChannels() > dsp::AudioBuffer::kMaxChannels)
	{
		return eInvalidArgument;
	}
	if (ResultSucceeded(result))
	{
		ReserveStackAudioBuffer(GetNumOutputChannels(), GetMaxBlockSize(), mTag);
	}
	return result;
}

void AdaptivePanner::CopyFrom(
	AdaptivePanner const& inOther, FrameRate const& inFrameRate, unsigned inControlInterval)
{
	StereoPanner::CopyFrom(inOther, inFrameRate, inControlInterval);
	AudioPannerDirectChannelAssignmentBase::Init(inOther.GetMatrix(), inOther.GetOutputLayout());
}

void AdaptivePanner::PlaceChannels(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput)
{
	ChannelMask const& mask = GetOutputMask();
	if (!mask.Any())
	{
		mRamps.AdvanceWithoutProcessing(inInput.GetUseSize());
		outOutput.SetSilenceFlags(dsp::SilenceFlags::All());
		return;
	}
	unsigned long long const channels = outOutput.GetNumChannels();
	if (channels == 1 && mask.Test(0))
	{
		mRamps.GetLeft().Process(inInput, 0, outOutput, 0);
		return;
	}
	Side left{mRamps.GetLeft(), 0, kNoMaster};
	Side right{mRamps.GetRight(), mRightInput, kNoMaster};
	unsigned long long const paired = channels / 2 * 2;
	for (unsigned long long channel = 0; channel < paired; ++channel)
	{
		if (mask.Test(channel))
		{
			PlaceChannel(inInput, outOutput, channel, channel % 2 == 0 ? left : right);
		}
		else
		{
			outOutput.MarkChannelSilent(channel);
		}
	}
	// A lone last channel that nothing is routed to is left as it is.
	if (paired < channels && mask.Test(paired))
	{
		PlaceChannel(inInput, outOutput, paired, left);
	}
}

void AdaptivePanner::PlaceChannel(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, unsigned long long inChannel, Side& ioSide)
{
	if (ioSide.mMaster == kNoMaster)
	{
		ioSide.mRamp.Process(inInput, ioSide.mInput, outOutput, inChannel);
		ioSide.mMaster = inChannel;
	}
	else
	{
		outOutput.CopyChannel(outOutput, ioSide.mMaster, inChannel);
	}
}

} // namespace SN
