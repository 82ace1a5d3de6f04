#pragma once

#include "SonaroHost/Base/SpeedKey.h"

#include <compare>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace SonaroHost
{

class CurveIntegral;

// A speed that changes over time, and how far it gets.
//
// Speed     Seconds of a content that pass in a second: 2 is twice as fast, below 0 backwards. With v and w at two
//           keys and u from 0 to 1 between them, it is v after hold, v + (w - v) u after linear, and
//           v + (w - v) (3 u^2 - 2 u^3) after smooth. Before the first key and after the last one it stays.
// Position  The integral of the speed from time 0 on, worked out in fractions of any length and rounded to a Ratio.
// Times     In seconds.
class SpeedCurve
{
public:
	using Key = SpeedKey;

	// Two times or positions, the lower one first.
	struct Span
	{
		Ratio mFirst;
		Ratio mLast;
	};

	// At least one key, in rising order of time, no two at one time.
	explicit SpeedCurve(std::vector<Key> inKeys);

	std::vector<Key> const& GetKeys() const { return mKeys; }
	// The speed, where it never changes.
	std::optional<Ratio> FindConstant() const;

	Ratio GetSpeed(Ratio const& inTime) const;
	Ratio GetPosition(Ratio const& inTime) const;
	// The way from one time to another as a whole number or a fraction, "7/2", of as many digits as it has.
	std::string DescribeWay(Ratio const& inFrom, Ratio const& inTo) const;

	// The lowest and the highest of what occurs from one time to another.
	Span GetSpeeds(Ratio const& inFrom, Ratio const& inTo) const;
	Span GetPositions(Ratio const& inFrom, Ratio const& inTo) const;

	// When the direction changes: the times at which the speed passes 0, or after which it does.
	std::vector<Ratio> FindTurns() const;
	// The stretches of time in which it is 0. Those at the ends reach inFar, which is above all keys, to either side.
	std::vector<Span> FindStops(Ratio const& inFar) const;
	// The curve with each time later by so much.
	SpeedCurve MoveBy(Ratio const& inDelay) const;
	SpeedCurve MultiplyBy(Ratio const& inFactor) const;

	CurveIntegral const& GetIntegral() const { return *mIntegral; }

	friend auto operator<=>(SpeedCurve const& inA, SpeedCurve const& inB) { return inA.mKeys <=> inB.mKeys; }
	friend bool operator==(SpeedCurve const& inA, SpeedCurve const& inB) { return inA.mKeys == inB.mKeys; }

private:
	std::vector<Ratio> ListBreaks(Ratio const& inFrom, Ratio const& inTo) const;

	std::vector<Key> mKeys;
	// That of the keys. Copies share it.
	std::shared_ptr<CurveIntegral const> mIntegral;
};

} // namespace SonaroHost
