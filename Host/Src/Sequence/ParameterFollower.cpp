#include "ParameterFollower.h"

#include <cmath>

namespace SonaroHost::Sequence
{

template <class T>
std::optional<float> ParameterFollower<T>::Follow(
	FrameRun const& inRun, StageClock const& inClock, float* outValues)
{
	if (!mParameter)
	{
		return mDefault;
	}
	Reading const reading(*mParameter);
	NoteEdit(reading, inClock);
	AutomationCurve const* const curve = reading.GetCurve();
	SN::TickTime const first = inClock.ToCurveTime(inRun.GetLowest());
	bool const isConstant = !curve || curve->IsConstant(first, inClock.ToCurveTime(inRun.GetHighest()));
	float const value = curve ? static_cast<float>(curve->GetRampedValue(first)) : mControl;
	if (isConstant && mRampDone >= mRampFrames)
	{
		mLast = value;
		return value;
	}
	for (std::int64_t i = 0; i < inRun.mCount; ++i)
	{
		float const at =
			isConstant ? value
					   : static_cast<float>(curve->GetRampedValue(inClock.ToCurveTime(inRun.GetFrame(i))));
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
