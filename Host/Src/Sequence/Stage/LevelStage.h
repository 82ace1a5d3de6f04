#pragma once

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
	LevelStage(Level const& inLevel, StageClock const& inClock)
		: mLevel(inLevel),
		  mClock(inClock)
	{
	}

	SN::InterfaceRef<SN::IAudioProcessor> Clone(SN::FrameRate const&, unsigned, unsigned) override
	{
		return zorvcore::classref::MakeObject<LevelStage>(mLevel.Clone(), mClock.Clone());
	}
	void ProcessAudioData(dsp::AudioBuffer& ioBuffer, SN::TickTime const&) SONARO_NONBLOCKING override
	{
		mLevel.Apply(ioBuffer, mClock);
	}
	void CollectLiveParameters(SN::LiveAudioParameterMap& outParameters) override
	{
		mLevel.CollectLiveParameters(outParameters);
	}

	std::u16string GetNodeName() override { return u"LevelStage"; }

private:
	Level mLevel;
	StageClock mClock;
};

} // namespace SonaroHost::Sequence
