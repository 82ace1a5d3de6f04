#pragma once

#include "Sonaro/Types.h"
#include "SonaroHost/Base/CurveShape.h"

#include <cstddef>
#include <vector>

namespace SonaroHost
{

// How long a jump takes for who follows a curve with ramps: 5 milliseconds.
inline constexpr SN::TickTime kCurveRamp = SN::TickTime::FromTicks(1270080000);

// A gain of this many decibels or fewer, minus infinity among them, is exactly 0.
inline constexpr double kSilenceDecibels = -144.0;

// A point of a curve.
struct AutomationPoint
{
	// In the time of what has the parameter: of the sequence, or from an item's start on.
	SN::TickTime mTime;
	// In the curve's scale: as it is given out, or in decibels.
	double mValue = 0.0;
	// How the segment that begins here runs.
	Interpolation mInterpolation = Interpolation::kLinear;
};

// The course of a value over time: points and what lies between them. Before the first point the curve has the first
// value, from the last point on the last value.
//
// Segments  A curve of n points has the segments 0 to n: segment i begins at point i - 1, which belongs to
//           it, and ends before point i. Segments 0 and n are open and hold.
// Ramps     A follower that must not click hears each jump as a straight line from where it stood to the curve,
//           over kCurveRamp from the jump on. It is worked out from the points, not from what was asked before.
// Smooth    Within a row of smooth segments the slope at a point is the weighted harmonic mean of the
//           slopes of the straight lines to its neighbours, and 0 at local extremes (F. N. Fritsch and
//           J. Butland, "A method for constructing local monotone piecewise cubic interpolants", 1984).
//           At the ends of a row it is 0.
// Threads   Any; it never changes. Nothing allocates after the constructor.
class AutomationCurve
{
public:
	// In any order; of points at one time the last one given counts. Throws a HostError that names the
	// point when a time is not within the time line, from -kTimeMax to kTimeMax without the ends, or when
	// a value, as given out, is no finite float.
	explicit AutomationCurve(
		std::vector<AutomationPoint> inPoints, AutomationScale inScale = AutomationScale::kLinear);

	bool IsEmpty() const { return mNodes.empty(); }
	// Whether every segment holds its value.
	bool HoldsOnly() const;

	// The index of the segment in which the time is.
	std::size_t FindSegment(SN::TickTime const& inTime) const;
	// The first time of the segment; that of an open one is the lowest of 64 bits.
	SN::TickTime GetSegmentStart(std::size_t inSegment) const;
	// The last time of the segment; that of an open one is the highest of 64 bits.
	SN::TickTime GetSegmentEnd(std::size_t inSegment) const;

	// The value at a time, in double precision; 0 without points. inSegment is the time's.
	double GetValue(SN::TickTime const& inTime, std::size_t inSegment) const;
	double GetValue(SN::TickTime const& inTime) const { return GetValue(inTime, FindSegment(inTime)); }

	// The value with jumps as ramps. What has only jumped once stays between the values on both sides of the jump.
	double GetRampedValue(SN::TickTime const& inTime) const;
	// Whether the value with ramps is the same all the way from one time to a later one.
	bool IsConstant(SN::TickTime const& inFirst, SN::TickTime const& inLast) const;

	// The same curve with every value but 0 turned into 1.
	AutomationCurve MakeSwitch() const;

	// The time itself where the value moves. Otherwise the next time after it at which the value begins to
	// move or jumps; kTimeMax when it never does.
	SN::TickTime GetNextInterestingTime(SN::TickTime const& inTime, std::size_t inSegment) const;
	SN::TickTime GetNextInterestingTime(SN::TickTime const& inTime) const
	{
		return GetNextInterestingTime(inTime, FindSegment(inTime));
	}

private:
	struct Node
	{
		SN::TickTime mTime;
		// The value in the scale of the points.
		double mValue = 0.0;
		Interpolation mInterpolation = Interpolation::kHold;
		// The slope in values per tick.
		double mSlope = 0.0;
		// Whether the segment that begins here has to be sampled all along.
		bool mIsMoving = false;
		// The next change after this point, beginning at another point.
		SN::TickTime mNextChange = SN::kTimeMax;
		// The last jump at or before this point, and where the ramps stood at it, as given out. Without one, a
		// time that is over long ago.
		SN::TickTime mRampStart = -SN::kTimeMax;
		double mRampFrom = 0.0;
	};

	void TakePoints(std::vector<AutomationPoint> inPoints);
	void ComputeSlopes();
	void FindChanges();
	void FindRamps();
	// A value of the segment after that point, as its ramp has got to it.
	static double GetOnRamp(Node const& inBegin, SN::TickTime const& inTime, double inValue);
	// The straight line's slope from that point to the next one.
	double GetSecant(std::size_t inIndex) const;
	double Interpolate(SN::TickTime const& inTime, Node const& inBegin, Node const& inEnd) const;
	double ToOutput(double inValue) const;

	std::vector<Node> mNodes;
	AutomationScale mScale;
};

} // namespace SonaroHost
