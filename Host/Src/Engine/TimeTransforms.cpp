#include "SonaroHost/Engine/TimeTransforms.h"

#include "Base/WideNumber.h"
#include "SonaroHost/Base/HostError.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace SonaroHost
{

namespace
{

// inSpan * inNumerator / inDenominator to the nearest tick, halves away from zero, without overflow in
// between.
SN::TickTime Scale(
	SN::TickTime const& inSpan, SN::TickTime const& inNumerator, SN::TickTime const& inDenominator)
{
	Wide const product = static_cast<Wide>(inSpan.GetTicks()) * inNumerator.GetTicks();
	Wide const divisor = inDenominator.GetTicks();
	Wide const half = product < 0 ? -(divisor / 2) : divisor / 2;
	Wide const ticks = (product + half) / divisor;
	return SN::TickTime::FromTicks(static_cast<std::int64_t>(
		std::clamp<Wide>(ticks, -SN::kTimeNotATime.GetTicks(), SN::kTimeNotATime.GetTicks())));
}

} // namespace

SpeedTimeTransform::SpeedTimeTransform(double inSpeed, SN::TickTime const& inOffset)
	: mSpeed(inSpeed),
	  mOffset(inOffset)
{
	if (!std::isfinite(inSpeed))
	{
		Refuse("a speed must be a finite number");
	}
}

KeyframedTimeTransform::KeyframedTimeTransform(std::vector<TimeKey> inKeys)
	: mKeys(std::move(inKeys))
{
	if (mKeys.empty())
	{
		Refuse("a time remapping needs at least one key");
	}
	auto const isNotLater = [](TimeKey const& inA, TimeKey const& inB) { return inA.mTime >= inB.mTime; };
	if (std::adjacent_find(mKeys.begin(), mKeys.end(), isNotLater) != mKeys.end())
	{
		Refuse("each key of a time remapping must be later than the one before");
	}
	if (mKeys.size() == 1)
	{
		SN::TickTime const tick = SN::TickTime::FromTicks(1);
		mKeys.push_back({mKeys.front().mTime + tick, mKeys.front().mSource + tick});
	}
}

SN::TickTime KeyframedTimeTransform::GetTime(SN::TickTime const& inTime)
{
	// The end of the segment around the time, or of the one at that end.
	auto const end = std::upper_bound(mKeys.begin() + 1, mKeys.end() - 1, inTime,
		[](SN::TickTime const& inValue, TimeKey const& inKey) { return inValue < inKey.mTime; });
	TimeKey const& from = *(end - 1);
	TimeKey const& to = *end;
	return from.mSource + Scale(inTime - from.mTime, to.mSource - from.mSource, to.mTime - from.mTime);
}

} // namespace SonaroHost
