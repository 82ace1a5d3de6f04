#include "SonaroHost/Base/SpeedCurve.h"

#include "CurveIntegral.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace SonaroHost
{

namespace
{

using Key = SpeedKey;

int GetSign(Ratio const& inNumber)
{
	return inNumber < Ratio() ? -1 : (inNumber > Ratio() ? 1 : 0);
}

Ratio Interpolate(Key const& inKey, Key const& inNext, Ratio const& inTime)
{
	if (inKey.mInterpolation == Interpolation::kHold)
	{
		return inKey.mSpeed;
	}
	Exact const place =
		(ToExact(inTime) - ToExact(inKey.mTime)) / (ToExact(inNext.mTime) - ToExact(inKey.mTime));
	Exact const risen =
		inKey.mInterpolation == Interpolation::kLinear ? place : Exact(place * place * (3 - 2 * place));
	Exact const speed = ToExact(inKey.mSpeed);
	return RoundToRatio(speed + (ToExact(inNext.mSpeed) - speed) * risen);
}

// Where between two keys, from 0 to 1, the speed passes 0.
Ratio FindZero(Key const& inKey, Key const& inNext)
{
	Ratio const risen = inKey.mSpeed / (inKey.mSpeed - inNext.mSpeed);
	if (inKey.mInterpolation != Interpolation::kSmooth)
	{
		return risen;
	}
	// The root of 3 u^2 - 2 u^3 = r between 0 and 1, halving the interval.
	double const target = risen.ToDouble();
	double place = 0.0;
	for (double step = 0.5; step > 0x1p-50; step /= 2.0)
	{
		double const middle = place + step;
		place = middle * middle * (3.0 - 2.0 * middle) <= target ? middle : place;
	}
	constexpr std::int64_t kParts = std::int64_t{1} << 40;
	return {std::llround(place * static_cast<double>(kParts)), kParts};
}

} // namespace

SpeedCurve::SpeedCurve(std::vector<Key> inKeys)
	: mKeys(std::move(inKeys)),
	  mIntegral(std::make_shared<CurveIntegral const>(mKeys))
{
}

std::optional<Ratio> SpeedCurve::FindConstant() const
{
	Ratio const speed = mKeys.front().mSpeed;
	bool const isConstant =
		std::ranges::all_of(mKeys, [&](Key const& inKey) { return inKey.mSpeed == speed; });
	return isConstant ? std::optional(speed) : std::nullopt;
}

Ratio SpeedCurve::GetSpeed(Ratio const& inTime) const
{
	auto const next = std::ranges::upper_bound(mKeys, inTime, {}, &Key::mTime);
	if (next == mKeys.begin() || next == mKeys.end())
	{
		return next == mKeys.begin() ? mKeys.front().mSpeed : mKeys.back().mSpeed;
	}
	return Interpolate(*std::prev(next), *next, inTime);
}

Ratio SpeedCurve::GetPosition(Ratio const& inTime) const
{
	return RoundToRatio(mIntegral->Find(inTime));
}

std::string SpeedCurve::DescribeWay(Ratio const& inFrom, Ratio const& inTo) const
{
	return mIntegral->FindWay(inFrom, inTo).str();
}

SpeedCurve::Span SpeedCurve::GetSpeeds(Ratio const& inFrom, Ratio const& inTo) const
{
	Ratio const first = GetSpeed(inFrom);
	Span speeds{first, first};
	auto const add = [&speeds](Ratio const& inSpeed) {
		speeds = {std::min(speeds.mFirst, inSpeed), std::max(speeds.mLast, inSpeed)};
	};
	add(GetSpeed(inTo));
	for (Key const& key : mKeys)
	{
		if (key.mTime > inFrom && key.mTime < inTo)
		{
			add(key.mSpeed);
		}
	}
	return speeds;
}

SpeedCurve::Span SpeedCurve::GetPositions(Ratio const& inFrom, Ratio const& inTo) const
{
	Ratio const first = GetPosition(inFrom);
	Span positions{first, first};
	for (Ratio const& time : ListBreaks(inFrom, inTo))
	{
		Ratio const position = GetPosition(time);
		positions = {std::min(positions.mFirst, position), std::max(positions.mLast, position)};
	}
	return positions;
}

// The turns between two times, and the later one.
std::vector<Ratio> SpeedCurve::ListBreaks(Ratio const& inFrom, Ratio const& inTo) const
{
	std::vector<Ratio> breaks = FindTurns();
	std::erase_if(breaks, [&](Ratio const& inTime) { return inTime <= inFrom || inTime >= inTo; });
	breaks.push_back(inTo);
	return breaks;
}

std::vector<Ratio> SpeedCurve::FindTurns() const
{
	std::vector<Ratio> turns;
	int direction = GetSign(mKeys.front().mSpeed);
	for (std::size_t i = 1; i < mKeys.size(); ++i)
	{
		Key const& key = mKeys[i - 1];
		int const sign = GetSign(mKeys[i].mSpeed);
		if (direction * sign < 0)
		{
			bool const passesZero =
				GetSign(key.mSpeed) * sign < 0 && key.mInterpolation != Interpolation::kHold;
			bool const leavesZero = key.mSpeed == Ratio() && key.mInterpolation != Interpolation::kHold;
			turns.push_back(passesZero ? key.mTime + (mKeys[i].mTime - key.mTime) * FindZero(key, mKeys[i])
									   : (leavesZero ? key.mTime : mKeys[i].mTime));
		}
		direction = sign != 0 ? sign : direction;
	}
	return turns;
}

std::vector<SpeedCurve::Span> SpeedCurve::FindStops(Ratio const& inFar) const
{
	std::vector<Span> stops;
	auto const add = [&stops](Ratio const& inFirst, Ratio const& inLast)
	{
		if (!stops.empty() && stops.back().mLast == inFirst)
		{
			stops.back().mLast = inLast;
			return;
		}
		stops.push_back({inFirst, inLast});
	};
	if (mKeys.front().mSpeed == Ratio())
	{
		add(-inFar, mKeys.front().mTime);
	}
	for (std::size_t i = 1; i < mKeys.size(); ++i)
	{
		Key const& key = mKeys[i - 1];
		bool const stays = key.mInterpolation == Interpolation::kHold || mKeys[i].mSpeed == Ratio();
		if (key.mSpeed == Ratio() && stays)
		{
			add(key.mTime, mKeys[i].mTime);
		}
	}
	if (mKeys.back().mSpeed == Ratio())
	{
		add(mKeys.back().mTime, inFar);
	}
	return stops;
}

SpeedCurve SpeedCurve::MoveBy(Ratio const& inDelay) const
{
	std::vector<Key> keys = mKeys;
	for (Key& key : keys)
	{
		key.mTime += inDelay;
	}
	return SpeedCurve(std::move(keys));
}

SpeedCurve SpeedCurve::MultiplyBy(Ratio const& inFactor) const
{
	std::vector<Key> keys = mKeys;
	for (Key& key : keys)
	{
		key.mSpeed = key.mSpeed * inFactor;
	}
	return SpeedCurve(std::move(keys));
}

} // namespace SonaroHost
