#pragma once

#include "LeftGain.h"
#include "Level.h"
#include "PlainStage.h"
#include "Playhead.h"

namespace SonaroHost::Sequence
{

// A fader as a stage of a chain. Unlike the engine's own, whose ramps go on from wherever they stood, it gives
// every frame its gain whatever was rendered before; see ParameterFollower.
class LevelStage final : public SN::Implements<LevelStage, PlainStage, SN::ILiveAudioParameterOwner>
{
public:
	// inLeftGain: null unless a pan is the next stage and takes what is left there.
	LevelStage(Level const& inLevel, StageClock const& inClock, std::shared_ptr<LeftGain> const& inLeftGain)
		: mLevel(inLevel),
		  mClock(inClock),
		  mLeftGain(inLeftGain)
	{
	}

	SN::InterfaceRef<SN::IAudioProcessor> Clone(SN::FrameRate const&, unsigned, unsigned) override
	{
		if (mLeftGain)
		{
			mLeftGain->mClone = std::make_shared<LeftGain>();
		}
		return zorvcore::classref::MakeObject<LevelStage>(
			mLevel.Clone(), mClock.Clone(), mLeftGain ? mLeftGain->mClone : nullptr);
	}
	void ProcessAudioData(dsp::AudioBuffer& ioBuffer, SN::TickTime const&) SONARO_NONBLOCKING override
	{
		if (mLeftGain)
		{
			mLeftGain->mGain = mLevel.ApplyUnlessAtRest(ioBuffer, mClock);
		}
		else
		{
			mLevel.Apply(ioBuffer, mClock);
		}
	}
	void CollectLiveParameters(SN::LiveAudioParameterMap& outParameters) override
	{
		mLevel.CollectLiveParameters(outParameters);
	}

	std::u16string GetNodeName() override { return u"LevelStage"; }

private:
	Level mLevel;
	StageClock mClock;
	std::shared_ptr<LeftGain> mLeftGain;
};

} // namespace SonaroHost::Sequence
