#include "ParameterFollower.h"

#include <cmath>

namespace SonaroHost::Sequence
{

template <class T>
std::optional<float> ParameterFollower<T>::FollowAtRest(
	Reading const& inReading, FrameRun const& inRun, StageClock const& inClock)
{
	NoteEdit(inReading, inClock);
	if (mRampDone < mRampFrames)
	{
		return std::nullopt;
	}
	AutomationCurve const* const curve = inReading.GetCurve();
	SN::TickTime const first = inClock.ToCurveTime(inRun.GetLowest());
	if (curve && !curve->IsConstant(first, inClock.ToCurveTime(inRun.GetHighest())))
	{
		return std::nullopt;
	}
	mLast = curve ? static_cast<float>(curve->GetRampedValue(first)) : mControl;
	return mLast;
}

template <class T>
std::optional<float> ParameterFollower<T>::Follow(
	FrameRun const& inRun, StageClock const& inClock, float* outValues)
{
	if (!mParameter)
	{
		return mDefault;
	}
	Reading const reading(*mParameter);
	if (auto const value = FollowAtRest(reading, inRun, inClock))
	{
		return value;
	}
	AutomationCurve const* const curve = reading.GetCurve();
	for (std::int64_t i = 0; i < inRun.mCount; ++i)
	{
		float const at =
			curve ? static_cast<float>(curve->GetRampedValue(inClock.ToCurveTime(inRun.GetFrame(i))))
				  : mControl;
		outValues[i] = GetOnRamp(at);
	}
	mLast = outValues[inRun.mCount - 1];
	return std::nullopt;
}

template <class T>
void ParameterFollower<T>::NoteEdit(Reading const& inReading, StageClock const& inClock)
{
	constexpr double kSeconds = 0.005;
	auto const control = static_cast<float>(inReading.GetControl());
	bool const hasMoved = !inReading.GetCurve() && control != mControl;
	bool const isEdited = mGeneration && (*mGeneration != inReading.GetGeneration() || hasMoved);
	if (inClock.IsJumping() || !mGeneration)
	{
		mRampDone = mRampFrames;
	}
	else if (isEdited)
	{
		mRampFrom = mLast;
		mRampFrames = std::llround(inClock.GetFrameRate().GetSamplesPerSecond() * kSeconds);
		mRampDone = 0;
	}
	mGeneration = inReading.GetGeneration();
	mControl = control;
}

template <class T>
float ParameterFollower<T>::GetOnRamp(float inValue)
{
	if (mRampDone >= mRampFrames)
	{
		return inValue;
	}
	float const progress = static_cast<float>(mRampDone++) / static_cast<float>(mRampFrames);
	return mRampFrom + (inValue - mRampFrom) * progress;
}

template class ParameterFollower<float>;
template class ParameterFollower<bool>;

} // namespace SonaroHost::Sequence
