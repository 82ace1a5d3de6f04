#include "Time/Stretch/TimeTransformToRatioConverter.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace SN
{

namespace
{

// Whole ticks, saturated.
TickTime ToTicks(float inTicks)
{
	if (inTicks < 0x1p63f)
	{
		return TickTime::FromTicks(static_cast<std::int64_t>(std::max(inTicks, -0x1p63f)));
	}
	return TickTime::FromTicks(std::numeric_limits<std::int64_t>::max());
}

} // namespace

TimeTransformToRatioConverter::TimeTransformToRatioConverter(
	InterfaceRef<VX::ITimeTransform> const& inTimeTransform, float inMinRatio, float inMaxRatio)
	: mTimeTransform(inTimeTransform),
	  mMinRatio(inMinRatio),
	  mMaxRatio(inMaxRatio)
{
}

void TimeTransformToRatioConverter::Seek(TickTime const& inTime)
{
	mCurrentTime = inTime;
	mSourceTime = mTimeTransform->GetTime(inTime);
	mRatio = 1.0f;
}

float TimeTransformToRatioConverter::GetRatio(TickTime const& inDuration)
{
	mCurrentTime += inDuration;
	TickTime const target = mTimeTransform->GetTime(mCurrentTime);
	if (mSourceTime < target)
	{
		// In single precision, as the limits are.
		auto const ticks = static_cast<float>(inDuration.GetTicks());
		TickTime const high = mSourceTime + ToTicks(std::floor(ticks * mMaxRatio));
		TickTime const low = mSourceTime + ToTicks(std::ceil(ticks * mMinRatio));
		TickTime const reached = std::min(high, std::max(target, low));
		// A block of no length reaches nothing.
		if (mSourceTime < reached)
		{
			mRatio = static_cast<float>(inDuration / (reached - mSourceTime));
			mSourceTime = reached;
		}
	}
	return mRatio;
}

} // namespace SN
