#pragma once

#include "Level.h"
#include "Playhead.h"
#include "Sonaro/IAudioProcessor.h"
#include "Sonaro/IAudioRenderGraphNodeInfo.h"

namespace SonaroHost::Sequence
{

// A fader as a stage of a chain. Unlike the engine's own, whose ramps go on from wherever they stood, it gives
// every frame its gain whatever was rendered before; see ParameterFollower.
class LevelStage final : public SN::Implements<LevelStage, SN::IAudioProcessor, SN::ILiveAudioParameterOwner,
							 SN::IAudioRenderGraphNodeInfo>
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
	bool HasHistory() override { return false; }
	void ProcessAudioData(dsp::AudioBuffer& ioBuffer, SN::TickTime const&) SONARO_NONBLOCKING override
	{
		mLevel.Apply(ioBuffer, mClock);
	}
	void Preroll(SN::TickTime const&, bool) override {}
	void Reset() override {}
	void InitializeAudioFilter() override {}
	void ShutdownAudioFilter() override {}
	SN::TickTime GetDelay() SONARO_NONBLOCKING override { return SN::kTimeZero; }
	void CollectLiveParameters(SN::LiveAudioParameterMap& outParameters) override
	{
		mLevel.CollectLiveParameters(outParameters);
	}

	std::u16string GetNodeName() override { return u"LevelStage"; }
	std::vector<SN::InterfaceRef<SN::UnknownBase>> GetInputNodes() override { return {}; }
	std::vector<SN::InterfaceRef<SN::UnknownBase>> GetProcessorNodes() override { return {}; }

private:
	Level mLevel;
	StageClock mClock;
};

} // namespace SonaroHost::Sequence
