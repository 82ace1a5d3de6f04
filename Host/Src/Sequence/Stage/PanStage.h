#pragma once

#include "ParameterFollower.h"
#include "Playhead.h"
#include "Sonaro/IAudioPanProcessor.h"
#include "Sonaro/ILiveAudioParameterOwner.h"
#include "Vexilon/AudioChannelType.h"

#include <cstdint>

namespace SonaroHost::Sequence
{

// Places a sound between left and right, frame by frame; see ParameterFollower. It repeats the formulas of PanLaw and of
// the balance in double precision, since the engine's own panners have ramps that depend on how a range was cut: a
// change of a law is made in both places.
//
// Laws  Mono keeps its power. All else keeps the side that it is panned to: the first channel of each pair is left,
//       the second one right. In 5.1 the front pair alone is heard.
class PanStage final : public SN::Implements<PanStage, SN::IAudioPanProcessor, SN::ILiveAudioParameterOwner>
{
public:
	struct Layouts
	{
		SN::AudioChannelLayout mInput;
		SN::AudioChannelLayout mOutput;
	};

	// inPan: from 0, left, over 0.5 to 1, right.
	PanStage(Layouts const& inLayouts, ParameterFollower<float> const& inPan, StageClock const& inClock)
		: mLayouts(inLayouts),
		  mPan(inPan),
		  mClock(inClock)
	{
	}

	SN::InterfaceRef<SN::IAudioPanProcessor> Clone(SN::FrameRate const&, unsigned) override
	{
		return zorvcore::classref::MakeObject<PanStage>(mLayouts, mPan.Clone(), mClock.Clone());
	}
	bool HasHistory() override { return false; }
	// As both types are alike, a node makes room for the wider of the two layouts.
	SN::AudioChannelType GetInputChannelType() override { return VX::kAudioChannelTypeAny; }
	SN::AudioChannelType GetOutputChannelType() override { return VX::kAudioChannelTypeAny; }
	SN::AudioChannelLayout GetInputAudioChannelLayout() override { return mLayouts.mInput; }
	SN::AudioChannelLayout GetOutputAudioChannelLayout() override { return mLayouts.mOutput; }
	unsigned GetNumInputChannels() SONARO_NONBLOCKING override
	{
		return static_cast<unsigned>(mLayouts.mInput.size());
	}
	unsigned GetNumOutputChannels() SONARO_NONBLOCKING override
	{
		return static_cast<unsigned>(mLayouts.mOutput.size());
	}
	bool DoesNotAlterAudio() SONARO_NONBLOCKING override { return false; }
	void Preroll(SN::TickTime const&, bool) override {}
	void Reset() override {}
	void ProcessAudioData(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
		SN::TickTime const& inTime) SONARO_NONBLOCKING override;
	void CollectLiveParameters(SN::LiveAudioParameterMap& outParameters) override;

private:
	struct Gains
	{
		float mLeft = 0.0f;
		float mRight = 0.0f;
	};

	Gains GetGains(float inPan) const;
	bool IsMono() const { return mLayouts.mInput.size() == 1; }
	void PlaceAtRest(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, float inPan,
		unsigned inOffset, unsigned inCount) const;
	void Place(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, FrameRun const& inRun,
		unsigned inOffset);

	Layouts mLayouts;
	ParameterFollower<float> mPan;
	StageClock mClock;
};

} // namespace SonaroHost::Sequence
