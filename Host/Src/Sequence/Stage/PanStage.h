#pragma once

#include "LayoutPanner.h"
#include "LeftGain.h"
#include "ParameterFollower.h"
#include "Playhead.h"
#include "Sonaro/ILiveAudioParameterOwner.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

namespace SonaroHost::Sequence
{

// Places a sound between left and right, frame by frame; see ParameterFollower. It repeats the formulas of PanLaw and of
// the balance in double precision, since the engine's own panners have ramps that depend on how a range was cut: a
// change of a law is made in both places.
//
// Laws  Mono keeps its power. All else keeps the side that it is panned to: the first channel of each pair is left,
//       the second one right. In 5.1 the front pair alone is heard.
class PanStage final : public SN::Implements<PanStage, LayoutPanner, SN::ILiveAudioParameterOwner>
{
public:
	// inPan: from 0, left, over 0.5 to 1, right. inLeftGain: null where no fader leaves a gain.
	PanStage(SN::AudioChannelLayout const& inInput, SN::AudioChannelLayout const& inOutput,
		ParameterFollower<float> const& inPan, StageClock const& inClock,
		std::shared_ptr<LeftGain> const& inLeftGain)
		: Implements(inInput, inOutput),
		  mPan(inPan),
		  mClock(inClock),
		  mLeftGain(inLeftGain ? inLeftGain : std::make_shared<LeftGain>())
	{
	}

	SN::InterfaceRef<SN::IAudioPanProcessor> Clone(SN::FrameRate const&, unsigned) override
	{
		return zorvcore::classref::MakeObject<PanStage>(
			mInput, mOutput, mPan.Clone(), mClock.Clone(), std::exchange(mLeftGain->mClone, nullptr));
	}
	void ProcessAudioData(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
		SN::TickTime const& inTime) SONARO_NONBLOCKING override;
	void CollectLiveParameters(SN::LiveAudioParameterMap& outParameters) override;

private:
	struct Gains
	{
		float mLeft = 0.0f;
		float mRight = 0.0f;
	};

	// What goes from where to where.
	struct Passage
	{
		dsp::AudioBuffer const& mInput;
		dsp::AudioBuffer& mOutput;
		// The channels of the output that get a sound.
		dsp::SilenceFlags mHeard;
	};

	dsp::SilenceFlags FindHeard(dsp::AudioBuffer const& inInput, dsp::AudioBuffer const& inOutput) const;
	Gains GetGains(float inPan) const;
	// The same without working it out anew for a pan that rests.
	Gains const& GetGainsAtRest(float inPan);
	bool IsMono() const { return mInput.size() == 1; }
	void PlaceAtRest(Passage const& inPassage, float inPan, unsigned inOffset, unsigned inCount);
	void Place(Passage const& inPassage, FrameRun const& inRun, unsigned inOffset);

	ParameterFollower<float> mPan;
	StageClock mClock;
	// Never null.
	std::shared_ptr<LeftGain> mLeftGain;
	// The pan that rested last, and its gains.
	std::optional<float> mRestingPan;
	Gains mRestingGains;
};

} // namespace SonaroHost::Sequence
