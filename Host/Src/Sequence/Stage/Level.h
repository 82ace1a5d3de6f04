#pragma once

#include "ParameterFollower.h"
#include "Playhead.h"
#include "Sonaro/ILiveAudioParameterOwner.h"
#include "SonaroHost/Sequence/Chain.h"

#include <optional>

namespace dsp
{
class AudioBuffer;
}

namespace SonaroHost::Sequence
{

// A gain and a mute, followed frame by frame.
class Level
{
public:
	Level(ParameterFollower<float> const& inGain, ParameterFollower<bool> const& inMute)
		: mGain(inGain),
		  mMute(inMute)
	{
	}

	Level Clone() const { return Level(mGain.Clone(), mMute.Clone()); }
	// Multiplies the frames that the clock says they are.
	void Apply(dsp::AudioBuffer& ioBuffer, StageClock& ioClock);
	// The same, but leaves a gain other than 0 that is the same in all frames to the caller: gives what is left to
	// multiply by.
	float ApplyUnlessAtRest(dsp::AudioBuffer& ioBuffer, StageClock& ioClock);
	void CollectLiveParameters(SN::LiveAudioParameterMap& outParameters) const;

private:
	// The gain all over a run; nothing where it moves.
	std::optional<float> FollowAtRest(FrameRun const& inRun, StageClock const& inClock);
	void ApplyMoving(
		dsp::AudioBuffer& ioBuffer, FrameRun const& inRun, unsigned inOffset, StageClock const& inClock);
	void ApplyTo(
		dsp::AudioBuffer& ioBuffer, FrameRun const& inRun, unsigned inOffset, StageClock const& inClock);

	ParameterFollower<float> mGain;
	ParameterFollower<bool> mMute;
};

// Adds a parameter that waits to be heard; an empty one is none.
template <class T>
void CollectLiveParameter(
	SN::InterfaceRef<AutomationParameter<T>> const& inParameter, SN::LiveAudioParameterMap& outParameters)
{
	if (inParameter && inParameter->HasActionPending())
	{
		constexpr bool kActionFlag = true;
		SN::InterfaceRef<SN::IRenderableAudioComponentParam> const parameter = inParameter;
		outParameters.emplace(parameter.GetUnknown().get(), SN::LiveAudioParameter{parameter, kActionFlag});
	}
}

} // namespace SonaroHost::Sequence
