#pragma once

#include "Playhead.h"
#include "SonaroHost/Automation/AutomationParameter.h"
#include "SonaroHost/Sequence/Chain.h"

#include <cstdint>
#include <optional>

namespace SonaroHost::Sequence
{

// Gives the value of a parameter at every frame of a sound.
//
// Curves  A function of the frame alone: the same after any start, in any cut and in both directions. Jumps are
//         ramps, see AutomationCurve.
// Edits   What changes while a playback runs is reached in a straight line over 5 milliseconds, from the next frame
//         on. At a jump of the playback it counts at once.
// Threads The one that renders. Nothing allocates.
template <class T>
class ParameterFollower
{
public:
	using Parameter = SN::InterfaceRef<AutomationParameter<T>>;

	// inParameter may be empty: then the value is inDefault.
	ParameterFollower(Parameter const& inParameter, float inDefault)
		: mParameter(inParameter),
		  mDefault(inDefault)
	{
	}

	ParameterFollower Clone() const { return {mParameter, mDefault}; }
	Parameter const& GetParameter() const { return mParameter; }

	// The value all over a run of any length; nothing where it moves.
	std::optional<float> FollowAtRest(FrameRun const& inRun, StageClock const& inClock)
	{
		return mParameter ? FollowAtRest(Reading(*mParameter), inRun, inClock) : mDefault;
	}
	// The value all over a run, or, where it moves, one for each frame into outValues.
	std::optional<float> Follow(FrameRun const& inRun, StageClock const& inClock, float* outValues);

private:
	using Reading = typename AutomationParameter<T>::Reading;

	std::optional<float> FollowAtRest(
		Reading const& inReading, FrameRun const& inRun, StageClock const& inClock);
	// Begins a ramp where the parameter has been edited.
	void NoteEdit(Reading const& inReading, StageClock const& inClock);
	float GetOnRamp(float inValue);

	Parameter mParameter;
	float mDefault;
	// What was heard last, if anything.
	std::optional<std::uint32_t> mGeneration;
	float mControl = 0.0f;
	float mLast = 0.0f;
	// The ramp after an edit.
	float mRampFrom = 0.0f;
	std::int64_t mRampFrames = 0;
	std::int64_t mRampDone = 0;
};

extern template class ParameterFollower<float>;
extern template class ParameterFollower<bool>;

} // namespace SonaroHost::Sequence
