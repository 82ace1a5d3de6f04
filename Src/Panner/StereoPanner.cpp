#include "Panner/StereoPanner.h"

#include "zorvaudiodsp/AudioBuffer.h"

namespace SN
{

StereoPanner::StereoPanner(char16_t const* inNodeName, AudioChannelType inInputType,
	StereoPanRamps::Law inLaw, unsigned long long inRightInput, AudioChannelType inOutputType)
	: AutomatedPanner(inNodeName, inInputType, inOutputType),
	  mRamps(inLaw),
	  mRightInput(inRightInput)
{
}

int StereoPanner::Init(AutomatedPannerSettings const& inSettings, std::size_t inParameterCount)
{
	int const result = AutomatedPanner::Init(inSettings, inParameterCount);
	mRamps.Init(inSettings.mFrameRate);
	return result;
}

void StereoPanner::CopyFrom(
	StereoPanner const& inOther, FrameRate const& inFrameRate, unsigned inControlInterval)
{
	AutomatedPanner::CopyFrom(inOther, inFrameRate, inControlInterval);
	mRamps.Init(inFrameRate);
}

void StereoPanner::ProcessAudioData(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, TickTime const& inTime)
{
	mRamps.SetPan(GetValueOrZero(0));
	if (inInput.IsSilent())
	{
		mRamps.AdvanceWithoutProcessing(inInput.GetUseSize());
		outOutput.Zero();
	}
	else
	{
		if (IsJump(inTime))
		{
			mRamps.Jump(GetFrameRate());
		}
		PlaceChannels(inInput, outOutput);
	}
	NoteBlock(inTime, inInput.GetUseSize());
}

void StereoPanner::PlaceChannels(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput)
{
	mRamps.GetLeft().Process(inInput, 0, outOutput, 0);
	mRamps.GetRight().Process(inInput, mRightInput, outOutput, 1);
}

} // namespace SN
