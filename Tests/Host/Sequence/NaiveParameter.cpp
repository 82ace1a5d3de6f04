#include "NaiveParameter.h"

#include "Vexilon/Keyframe.h"

#include <algorithm>
#include <cmath>

namespace SonaroHost::Sequence::Testing
{

namespace
{

constexpr double kRampSeconds = 0.005;
constexpr SN::TickTime kTick = SN::TickTime::FromTicks(1);

} // namespace

template <class T>
NaiveParameter<T>::NaiveParameter(SN::InterfaceRef<AutomationParameter<T>> const& inParameter,
	SN::FrameRate const& inFrameRate, std::vector<LiveEdits::Edit<T>> const* inEdits,
	NaivePlace const& inPlace)
	: mParameter(inParameter),
	  mFrameRate(inFrameRate),
	  mEdits(inEdits),
	  mPlace(inPlace)
{
	typename AutomationParameter<T>::Reading const reading(*inParameter);
	AutomationCurve const* const curve = reading.GetCurve();
	mHasCurve = curve;
	std::size_t const segments = curve ? curve->FindSegment(SN::kTimeMax) : 0;
	for (std::size_t segment = 1; segment <= segments; ++segment)
	{
		SN::TickTime const start = curve->GetSegmentStart(segment);
		bool const isOnItsWay = curve->GetNextInterestingTime(start - kTick) == start - kTick;
		if (!isOnItsWay && GetCurveValue(start) != GetCurveValue(start - kTick))
		{
			mJumps.push_back(start);
		}
	}
}

template <class T>
double NaiveParameter<T>::GetCurveValue(SN::TickTime const& inTime) const
{
	VX::Keyframe<T> keyframe;
	mParameter->UpdateControl(inTime, nullptr, &keyframe);
	return static_cast<double>(keyframe.mValue);
}

template <class T>
double NaiveParameter<T>::GetRamped(SN::TickTime const& inTime, std::size_t inJumps) const
{
	double const value = GetCurveValue(inTime);
	if (inJumps == 0)
	{
		return value;
	}
	SN::TickTime const& jump = mJumps[inJumps - 1];
	double const progress = (inTime - jump).GetSeconds() / kRampSeconds;
	if (progress >= 1.0)
	{
		return value;
	}
	double const from = GetRamped(jump - kTick, inJumps - 1);
	return from + (value - from) * progress;
}

template <class T>
double NaiveParameter<T>::GetValue(std::int64_t inFrame, std::int64_t inShift) const
{
	if (mHasCurve)
	{
		SN::TickTime const time(inFrame - inShift, mFrameRate);
		auto const jumps = std::upper_bound(mJumps.begin(), mJumps.end(), time) - mJumps.begin();
		return GetRamped(time, static_cast<std::size_t>(jumps));
	}
	if (mEdits)
	{
		return FollowEdits(*mEdits, inFrame - mPlace.mAhead,
			std::llround(mFrameRate.GetSamplesPerSecond() * kRampSeconds), mPlace.mBegin);
	}
	return GetCurveValue({});
}

template class NaiveParameter<float>;
template class NaiveParameter<bool>;

} // namespace SonaroHost::Sequence::Testing
