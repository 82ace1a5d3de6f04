#include "Panner/SurroundPanner.h"

#include "Panner/Algorithm/StereoPanRamps.h"
#include "zorvaudiodsp/AudioBuffer.h"

namespace SN
{

namespace
{

enum Control : unsigned long long
{
	kControlX,
	kControlY,
	kControlCenter,
	kControlLowFrequency,
};

// A ramp to hold until Init knows the rate.
dsp::GainRamp MakeRampAtRest()
{
	return {48000.0f, 1.0f, kPannerRampSeconds};
}

} // namespace

SurroundPanner::SurroundPanner(
	char16_t const* inNodeName, AudioChannelType inInputType, Law inLaw, std::size_t inParameterCount)
	: AutomatedPanner(inNodeName, inInputType, VX::kAudioChannelType51),
	  mLaw(inLaw),
	  mParameterCount(inParameterCount),
	  mRamps{MakeRampAtRest(), MakeRampAtRest(), MakeRampAtRest(), MakeRampAtRest(), MakeRampAtRest(),
		  MakeRampAtRest()}
{
}

int SurroundPanner::Init(AutomatedPannerSettings const& inSettings)
{
	int const result = AutomatedPanner::Init(inSettings, mParameterCount);
	mFilter.Init(inSettings.mFrameRate);
	MakeRamps(inSettings.mFrameRate, {1.0f, 1.0f, 1.0f, 1.0f, 1.0f, 1.0f}, kPannerRampSeconds);
	return result;
}

void SurroundPanner::CopyFrom(
	SurroundPanner const& inOther, FrameRate const& inFrameRate, unsigned inControlInterval)
{
	AutomatedPanner::CopyFrom(inOther, inFrameRate, inControlInterval);
	mFilter.CopyCoefficientsFrom(inOther.mFilter);
	MakeRamps(inFrameRate, {1.0f, 1.0f, 1.0f, 1.0f, 1.0f, 1.0f}, kPannerRampSeconds);
}

void SurroundPanner::ProcessAudioData(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, TickTime const& inTime)
{
	SetGains();
	unsigned const frames = inInput.GetUseSize();
	if (inInput.IsSilent())
	{
		for (dsp::GainRamp& ramp : mRamps)
		{
			ramp.AdvanceWithoutProcessing(frames);
		}
		outOutput.Zero();
	}
	else
	{
		if (IsJump(inTime))
		{
			MakeRamps(GetFrameRate(),
				{mGains.mLeft, mGains.mRight, mGains.mCenter, mRamps[kLowFrequency].GetTargetGain(),
					mGains.mLeftSurround, mGains.mRightSurround},
				kPannerRampSecondsAfterJump);
		}
		if (inInput.GetNumChannels() >= GetNumInputChannels() && outOutput.GetNumChannels() >= kNumChannels)
		{
			PlaceChannels(inInput, outOutput);
		}
		else
		{
			outOutput.Zero();
		}
	}
	NoteBlock(inTime, frames);
}

void SurroundPanner::SetGains()
{
	mRamps[kLowFrequency].SetTargetGain(GetValueOrZero(kControlLowFrequency));
	SurroundPosition const position{
		.mX = GetValueOrZero(kControlX),
		.mY = GetValueOrZero(kControlY),
		.mCenter = GetValueOrZero(kControlCenter),
	};
	// Also for what is not a number, which differs from itself.
	if (position.mX != mLastPosition.mX || position.mY != mLastPosition.mY ||
		position.mCenter != mLastPosition.mCenter)
	{
		mLastPosition = position;
		mGains = mLaw(position);
		mRamps[kLeft].SetTargetGain(mGains.mLeft);
		mRamps[kRight].SetTargetGain(mGains.mRight);
		mRamps[kCenter].SetTargetGain(mGains.mCenter);
		mRamps[kLeftSurround].SetTargetGain(mGains.mLeftSurround);
		mRamps[kRightSurround].SetTargetGain(mGains.mRightSurround);
	}
}

void SurroundPanner::MakeRamps(
	FrameRate const& inFrameRate, std::array<float, kNumChannels> const& inGains, float inRampSeconds)
{
	for (unsigned channel = 0; channel < kNumChannels; ++channel)
	{
		mRamps[channel] = dsp::GainRamp(inFrameRate, inGains[channel], inRampSeconds);
	}
}

} // namespace SN
