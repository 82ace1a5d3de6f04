#include "SonaroHost/Automation/AutomationCurve.h"

#include "SonaroHost/Base/HostError.h"
#include "zorvcore/math/Elementary.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>

namespace SonaroHost
{

namespace
{

[[noreturn]] void RefusePoint(std::size_t inIndex, std::string const& inReason)
{
	Refuse("point " + std::to_string(inIndex + 1) + " of the curve " + inReason);
}

double ToGain(double inDecibels)
{
	constexpr double kDecibelsPerDecade = 20.0;
	return inDecibels <= kSilenceDecibels ? 0.0 : zorvcore::math::Exp10(inDecibels / kDecibelsPerDecade);
}

double GetTicksBetween(SN::TickTime const& inBegin, SN::TickTime const& inEnd)
{
	return static_cast<double>(inEnd.GetTicks() - inBegin.GetTicks());
}

} // namespace

AutomationCurve::AutomationCurve(std::vector<AutomationPoint> inPoints, AutomationScale inScale)
	: mScale(inScale)
{
	TakePoints(std::move(inPoints));
	ComputeSlopes();
	FindChanges();
	FindRamps();
}

void AutomationCurve::TakePoints(std::vector<AutomationPoint> inPoints)
{
	for (std::size_t i = 0; i < inPoints.size(); ++i)
	{
		AutomationPoint& point = inPoints[i];
		if (point.mTime <= -SN::kTimeMax || point.mTime >= SN::kTimeMax)
		{
			RefusePoint(i, "is outside the timeline, which extends 100 hours to either side of 0");
		}
		if (mScale == AutomationScale::kDecibels && point.mValue < kSilenceDecibels)
		{
			point.mValue = kSilenceDecibels;
		}
		// Written so that what is not a number fails it.
		if (!(std::abs(ToOutput(point.mValue)) <= double{std::numeric_limits<float>::max()}))
		{
			RefusePoint(i, "has a value that is not a finite number");
		}
	}
	std::ranges::stable_sort(inPoints, {}, &AutomationPoint::mTime);
	for (AutomationPoint const& point : inPoints)
	{
		if (!mNodes.empty() && mNodes.back().mTime == point.mTime)
		{
			mNodes.pop_back();
		}
		Node node;
		node.mTime = point.mTime;
		node.mValue = point.mValue;
		node.mInterpolation = point.mInterpolation;
		mNodes.push_back(node);
	}
}

void AutomationCurve::ComputeSlopes()
{
	for (std::size_t i = 1; i + 1 < mNodes.size(); ++i)
	{
		double const before = GetSecant(i - 1);
		double const behind = GetSecant(i);
		bool const isInRow = mNodes[i - 1].mInterpolation == Interpolation::kSmooth &&
							 mNodes[i].mInterpolation == Interpolation::kSmooth;
		bool const isExtreme = !((before > 0.0 && behind > 0.0) || (before < 0.0 && behind < 0.0));
		if (!isInRow || isExtreme)
		{
			continue;
		}
		double const ticksBefore = GetTicksBetween(mNodes[i - 1].mTime, mNodes[i].mTime);
		double const ticksBehind = GetTicksBetween(mNodes[i].mTime, mNodes[i + 1].mTime);
		double const weightBefore = ticksBefore + 2.0 * ticksBehind;
		double const weightBehind = 2.0 * ticksBefore + ticksBehind;
		mNodes[i].mSlope = (weightBefore + weightBehind) / (weightBefore / before + weightBehind / behind);
	}
}

void AutomationCurve::FindChanges()
{
	for (std::size_t i = mNodes.size(); i-- > 1;)
	{
		Node& begin = mNodes[i - 1];
		Node const& end = mNodes[i];
		bool const differ = begin.mValue != end.mValue;
		bool const isHeld = begin.mInterpolation == Interpolation::kHold;
		begin.mIsMoving = differ && !isHeld;
		begin.mNextChange = (differ && isHeld) || end.mIsMoving ? end.mTime : end.mNextChange;
	}
}

void AutomationCurve::FindRamps()
{
	for (std::size_t i = 1; i < mNodes.size(); ++i)
	{
		Node const& before = mNodes[i - 1];
		Node& node = mNodes[i];
		node.mRampStart = before.mRampStart;
		node.mRampFrom = before.mRampFrom;
		if (!before.mIsMoving && before.mValue != node.mValue)
		{
			node.mRampFrom = GetOnRamp(before, node.mTime, ToOutput(before.mValue));
			node.mRampStart = node.mTime;
		}
	}
}

double AutomationCurve::GetOnRamp(Node const& inBegin, SN::TickTime const& inTime, double inValue)
{
	SN::TickTime const age = inTime - inBegin.mRampStart;
	if (age >= kCurveRamp)
	{
		return inValue;
	}
	double const progress = static_cast<double>(age.GetTicks()) / static_cast<double>(kCurveRamp.GetTicks());
	return inBegin.mRampFrom + (inValue - inBegin.mRampFrom) * progress;
}

double AutomationCurve::GetRampedValue(SN::TickTime const& inTime) const
{
	std::size_t const segment = FindSegment(inTime);
	double const value = GetValue(inTime, segment);
	return segment == 0 ? value : GetOnRamp(mNodes[segment - 1], inTime, value);
}

bool AutomationCurve::IsConstant(SN::TickTime const& inFirst, SN::TickTime const& inLast) const
{
	return GetNextInterestingTime(inFirst - kCurveRamp) > inLast;
}

AutomationCurve AutomationCurve::MakeSwitch() const
{
	std::vector<AutomationPoint> points;
	points.reserve(mNodes.size());
	for (Node const& node : mNodes)
	{
		points.push_back({node.mTime, ToOutput(node.mValue) != 0.0 ? 1.0 : 0.0, Interpolation::kHold});
	}
	return AutomationCurve(std::move(points));
}

bool AutomationCurve::HoldsOnly() const
{
	return std::ranges::none_of(mNodes, &Node::mIsMoving);
}

std::size_t AutomationCurve::FindSegment(SN::TickTime const& inTime) const
{
	auto const found = std::upper_bound(mNodes.begin(), mNodes.end(), inTime,
		[](SN::TickTime const& inSought, Node const& inNode) { return inSought < inNode.mTime; });
	return static_cast<std::size_t>(found - mNodes.begin());
}

SN::TickTime AutomationCurve::GetSegmentStart(std::size_t inSegment) const
{
	return inSegment == 0 ? SN::TickTime::FromTicks(std::numeric_limits<std::int64_t>::min())
						  : mNodes[inSegment - 1].mTime;
}

SN::TickTime AutomationCurve::GetSegmentEnd(std::size_t inSegment) const
{
	return inSegment == mNodes.size() ? SN::TickTime::FromTicks(std::numeric_limits<std::int64_t>::max())
									  : mNodes[inSegment].mTime - SN::TickTime::FromTicks(1);
}

double AutomationCurve::GetValue(SN::TickTime const& inTime, std::size_t inSegment) const
{
	if (mNodes.empty())
	{
		return 0.0;
	}
	if (inSegment == 0)
	{
		return ToOutput(mNodes.front().mValue);
	}
	Node const& begin = mNodes[inSegment - 1];
	return ToOutput(begin.mIsMoving ? Interpolate(inTime, begin, mNodes[inSegment]) : begin.mValue);
}

SN::TickTime AutomationCurve::GetNextInterestingTime(SN::TickTime const& inTime, std::size_t inSegment) const
{
	if (mNodes.empty())
	{
		return SN::kTimeMax;
	}
	if (inSegment == 0)
	{
		return mNodes.front().mIsMoving ? mNodes.front().mTime : mNodes.front().mNextChange;
	}
	Node const& begin = mNodes[inSegment - 1];
	return begin.mIsMoving ? inTime : begin.mNextChange;
}

double AutomationCurve::GetSecant(std::size_t inIndex) const
{
	Node const& begin = mNodes[inIndex];
	Node const& end = mNodes[inIndex + 1];
	return (end.mValue - begin.mValue) / GetTicksBetween(begin.mTime, end.mTime);
}

double AutomationCurve::Interpolate(SN::TickTime const& inTime, Node const& inBegin, Node const& inEnd) const
{
	double const ticks = GetTicksBetween(inBegin.mTime, inEnd.mTime);
	double const x = GetTicksBetween(inBegin.mTime, inTime) / ticks;
	double const rise = inEnd.mValue - inBegin.mValue;
	double value = inBegin.mValue + rise * x;
	if (inBegin.mInterpolation == Interpolation::kSmooth)
	{
		// The cubic Hermite polynomial of both values and slopes, as what it adds to the first value.
		double const y = 1.0 - x;
		value = inBegin.mValue + rise * (x * x * (3.0 - 2.0 * x)) +
				ticks * (x * y) * (inBegin.mSlope * y - inEnd.mSlope * x);
	}
	// Rounding may step over the ends by a trifle.
	auto const [lowest, highest] = std::minmax(inBegin.mValue, inEnd.mValue);
	return std::clamp(value, lowest, highest);
}

double AutomationCurve::ToOutput(double inValue) const
{
	return mScale == AutomationScale::kDecibels ? ToGain(inValue) : inValue;
}

} // namespace SonaroHost
