#include "SendStage.h"

#include "zorvaudiodsp/AudioSubBuffer.h"

#include <algorithm>

namespace SonaroHost::Sequence
{

namespace
{

// The fade of a track's mute after its preroll takes as long, so that the track falls silent when the send has done
// so.
constexpr float kMuteSeconds = 0.01f;

} // namespace

SendStage::SendStage(Settings const& inSettings)
	: mSettings(inSettings),
	  mSent(inSettings.mPanner->GetNumOutputChannels(), std::max(inSettings.mMaxBlockSize, 1u)),
	  mMuteRamp(inSettings.mClock.GetFrameRate(), IsMuted() ? 0.0f : 1.0f, kMuteSeconds)
{
	mSent.Zero();
}

SN::InterfaceRef<SN::IAudioProcessor> SendStage::Clone(
	SN::FrameRate const& inFrameRate, unsigned inMaxBlockSize, unsigned inControlInterval)
{
	return zorvcore::classref::MakeObject<SendStage>(
		Settings{mSettings.mLevel.Clone(), mSettings.mClock.Clone(),
			mSettings.mPanner->Clone(inFrameRate, inControlInterval), mSettings.mMute, inMaxBlockSize});
}

void SendStage::Preroll(SN::TickTime const& inTime, bool inReverse)
{
	mSettings.mPanner->Preroll(inTime, inReverse);
	mMuteRamp = dsp::GainRamp(mSettings.mClock.GetFrameRate(), IsMuted() ? 0.0f : 1.0f, kMuteSeconds);
}

void SendStage::ProcessAudioData(dsp::AudioBuffer& inBuffer, SN::TickTime const& inTime)
{
	if (mRequest != mSettings.mClock.GetRequest())
	{
		mRequest = mSettings.mClock.GetRequest();
		mFrames = 0;
		mSent.SetUseSize(mSent.GetCapacity());
		mSent.Zero();
	}
	dsp::AudioSubBuffer window;
	window.Init(mSent.GetNumChannels());
	window.Assign(mSent, mFrames);
	window.SetUseSize(inBuffer.GetUseSize());
	if (mSettings.mPanner->DoesNotAlterAudio())
	{
		window.CopyFrom(inBuffer, inBuffer.GetUseSize());
	}
	else
	{
		mSettings.mPanner->ProcessAudioData(inBuffer, window, inTime);
	}
	mSettings.mLevel.Apply(window, mSettings.mClock);
	mMuteRamp.SetTargetGain(IsMuted() ? 0.0f : 1.0f);
	mMuteRamp.Process(window);
	mFrames += inBuffer.GetUseSize();
}

void SendStage::MixCachedAudio(dsp::AudioBuffer& ioBuffer)
{
	mSent.SetUseSize(mFrames);
	ioBuffer.Mix(mSent);
}

void SendStage::CollectLiveParameters(SN::LiveAudioParameterMap& outParameters)
{
	mSettings.mLevel.CollectLiveParameters(outParameters);
	if (SN::InterfaceRef<SN::ILiveAudioParameterOwner> const panner = mSettings.mPanner)
	{
		panner->CollectLiveParameters(outParameters);
	}
}

} // namespace SonaroHost::Sequence
