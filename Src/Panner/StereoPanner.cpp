#include "Panner/StereoPanner.h"

#include "zorvaudiodsp/AudioBuffer.h"

namespace SN
{

StereoPanner::StereoPanner(char16_t const* inNodeName, AudioChannelType inInputType,
	StereoPanRamps::Law inLaw, unsigned long long inRightInput)
	: AutomatedPanner(inNodeName, inInputType, VX::kAudioChannelTypeStereo),
	  mRamps(inLaw),
	  mRightInput(inRightInput)
{
}

int StereoPanner::Init(AutomatedPannerSettings const& inSettings)
{
	int const result = AutomatedPanner::Init(inSettings, 1);
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
		mRamps.GetLeft().Process(inInput, 0, outOutput, 0);
		mRamps.GetRight().Process(inInput, mRightInput, outOutput, 1);
	}
	NoteBlock(inTime, inInput.GetUseSize());
}

} // namespace SN
