#include "SonaroHost/Automation/AutomationCurve.h"

#include "Host/Refusal.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <utility>
#include <vector>

namespace SonaroHost::Testing::AutomationCurveTest
{

using testing::HasSubstr;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr auto eHold = Interpolation::kHold;
constexpr auto eLinear = Interpolation::kLinear;
constexpr auto eSmooth = Interpolation::kSmooth;

// A point in seconds.
struct Point
{
	double mSeconds;
	double mValue;
	Interpolation mInterpolation = eHold;
};

AutomationCurve MakeCurve(
	std::vector<Point> const& inPoints, AutomationScale inScale = AutomationScale::kLinear)
{
	std::vector<AutomationPoint> points;
	points.reserve(inPoints.size());
	for (Point const& point : inPoints)
	{
		points.push_back({SN::TickTime::FromSeconds(point.mSeconds), point.mValue, point.mInterpolation});
	}
	return AutomationCurve(points, inScale);
}

// The slope at a point of a curve in seconds.
double GetSlope(std::vector<Point> const& inPoints, std::size_t inIndex)
{
	if (inIndex == 0 || inIndex + 1 == inPoints.size() || inPoints[inIndex].mInterpolation != eSmooth ||
		inPoints[inIndex - 1].mInterpolation != eSmooth)
	{
		return 0.0;
	}
	Point const& a = inPoints[inIndex - 1];
	Point const& b = inPoints[inIndex];
	Point const& c = inPoints[inIndex + 1];
	double const h0 = b.mSeconds - a.mSeconds;
	double const h1 = c.mSeconds - b.mSeconds;
	double const d0 = (b.mValue - a.mValue) / h0;
	double const d1 = (c.mValue - b.mValue) / h1;
	double const share = (h0 + 2.0 * h1) / (3.0 * (h0 + h1));
	return d0 * d1 > 0.0 ? d0 * d1 / (share * d1 + (1.0 - share) * d0) : 0.0;
}

// A sorted curve's value by the basis functions of cubic Hermite polynomials, in seconds.
double GetExpected(std::vector<Point> const& inPoints, double inSeconds)
{
	std::size_t i = 0;
	while (i + 1 < inPoints.size() && inPoints[i + 1].mSeconds <= inSeconds)
	{
		++i;
	}
	Point const& a = inPoints[i];
	if (inSeconds < a.mSeconds || i + 1 == inPoints.size() || a.mInterpolation == eHold)
	{
		return a.mValue;
	}
	Point const& b = inPoints[i + 1];
	double const h = b.mSeconds - a.mSeconds;
	double const t = (inSeconds - a.mSeconds) / h;
	if (a.mInterpolation == eLinear)
	{
		return (1.0 - t) * a.mValue + t * b.mValue;
	}
	return a.mValue * (2 * t * t * t - 3 * t * t + 1) + b.mValue * (3 * t * t - 2 * t * t * t) +
		   h * GetSlope(inPoints, i) * (t * t * t - 2 * t * t + t) +
		   h * GetSlope(inPoints, i + 1) * (t * t * t - t * t);
}

TEST(AutomationCurve, RunsByTheFormulasInEitherScale)
{
	std::vector<Point> const curves[] = {
		{{1, 5}},
		{{0, 1, eHold}, {1, 2, eHold}, {2, -1}},
		{{0, 1, eLinear}, {1, -3, eLinear}, {4, 8}},
		{{-2, 0, eSmooth}, {3, 1}},
		{{0, 0, eSmooth}, {1, 1, eSmooth}, {3, 2, eSmooth}, {3.5, 9}},
		{{0, 0, eSmooth}, {1, -1, eSmooth}, {2, -4, eSmooth}, {3, -4, eSmooth}, {4, -3, eSmooth}, {5, -7}},
		{{0, 0, eSmooth}, {1, 1, eLinear}, {2, 3, eSmooth}, {3, 5, eHold}, {4, 6, eSmooth}, {5, 7, eLinear}},
	};
	for (std::vector<Point> const& points : curves)
	{
		SCOPED_TRACE(&points - curves);
		AutomationCurve const linear = MakeCurve(points);
		AutomationCurve const decibels = MakeCurve(points, AutomationScale::kDecibels);
		for (int step = -3 * 64; step <= 7 * 64; ++step)
		{
			double const seconds = step / 64.0;
			double const expected = GetExpected(points, seconds);
			SN::TickTime const time = SN::TickTime::FromSeconds(seconds);
			EXPECT_NEAR(linear.GetValue(time), expected, 1e-12) << seconds;
			EXPECT_NEAR(decibels.GetValue(time), std::pow(10.0, expected / 20.0), 1e-12) << seconds;
		}
	}
}

TEST(AutomationCurve, SmallDecibelsAreSilence)
{
	AutomationCurve const curve = MakeCurve(
		{{0, -kInfinity, eLinear}, {1, 0, eHold}, {2, -143.9, eHold}, {3, -144, eHold}, {4, -1000, eHold}},
		AutomationScale::kDecibels);
	auto const get = [&](double inSeconds) { return curve.GetValue(SN::TickTime::FromSeconds(inSeconds)); };
	EXPECT_EQ(get(-1), 0.0);
	EXPECT_EQ(get(0), 0.0);
	EXPECT_NEAR(get(0.5), std::pow(10.0, -72.0 / 20.0), 1e-15);
	EXPECT_EQ(get(1), 1.0);
	EXPECT_GT(get(2), 0.0);
	EXPECT_EQ(get(3), 0.0);
	EXPECT_EQ(get(4), 0.0);
}

TEST(AutomationCurve, TellsWhenItHasToBeSampledNext)
{
	constexpr double kSelf = -100.0;
	constexpr double kNever = 100.0;
	struct Case
	{
		std::vector<Point> mPoints;
		// Pairs of a time and what is expected there.
		std::vector<std::pair<double, double>> mNext;
	};
	Case const cases[] = {
		{{}, {{0, kNever}}},
		{{{1, 5}}, {{0, kNever}, {1, kNever}, {2, kNever}}},
		{{{1, 5, eHold}, {2, 5, eHold}, {3, 6, eHold}}, {{0, 3}, {1, 3}, {2, 3}, {3, kNever}}},
		{{{1, 5, eLinear}, {2, 6, eLinear}}, {{0, 1}, {1, kSelf}, {1.5, kSelf}, {2, kNever}, {3, kNever}}},
		{{{1, 5, eSmooth}, {2, 5, eSmooth}, {3, 6}}, {{0, 2}, {1, 2}, {1.5, 2}, {2, kSelf}, {3, kNever}}},
		{{{1, 5, eLinear}, {2, 6, eHold}, {3, 7, eLinear}, {4, 7, eHold}, {5, 7, eSmooth}, {6, 8}},
			{{1.9, kSelf}, {2, 3}, {3, 5}, {4.5, 5}, {5, kSelf}, {6, kNever}}},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(&test - cases);
		AutomationCurve const curve = MakeCurve(test.mPoints);
		for (auto const& [seconds, next] : test.mNext)
		{
			SN::TickTime const time = SN::TickTime::FromSeconds(seconds);
			EXPECT_EQ(curve.GetNextInterestingTime(time), next == kSelf    ? time
														  : next == kNever ? SN::kTimeMax
																		   : SN::TickTime::FromSeconds(next))
				<< seconds;
		}
	}
}

// A point for each millisecond of the table's times.
TEST(AutomationCurve, JumpsAreRampsOfFiveMillisecondsForWhoFollowsThem)
{
	auto const at = [](double inMilliseconds) { return SN::TickTime::FromSeconds(inMilliseconds / 1000.0); };
	// Down and up again before the ramp is over, a line that a ramp leads into, and one that ends in a jump.
	AutomationCurve const curve({{at(0), 1.0, Interpolation::kHold}, {at(10), 0.0, Interpolation::kHold},
		{at(12), 1.0, Interpolation::kHold}, {at(30), 0.0, Interpolation::kLinear},
		{at(40), 1.0, Interpolation::kHold}, {at(60), 0.5, Interpolation::kLinear},
		{at(70), 0.5, Interpolation::kHold}});
	constexpr std::pair<double, double> kCases[] = {{9.999, 1.0}, {10, 1.0}, {11, 0.8}, {12, 0.6},
		{14.5, 0.8}, {17, 1.0}, {30, 1.0}, {32, 0.6 + 0.08}, {35, 0.5}, {37.5, 0.75}, {40, 1.0}, {60, 1.0},
		{62.5, 0.75}, {65, 0.5}, {80, 0.5}};
	for (auto const& [milliseconds, value] : kCases)
	{
		EXPECT_NEAR(curve.GetRampedValue(at(milliseconds)), value, 1e-9) << milliseconds;
	}
	EXPECT_TRUE(curve.IsConstant(at(0), at(9.9)));
	EXPECT_FALSE(curve.IsConstant(at(0), at(10)));
	EXPECT_FALSE(curve.IsConstant(at(16), at(20)));
	EXPECT_TRUE(curve.IsConstant(at(17.1), at(29.9)));
	EXPECT_TRUE(curve.IsConstant(at(46), at(59)));
	EXPECT_TRUE(curve.IsConstant(at(65.1), at(1e6)));
}

TEST(AutomationCurve, NeverTurnsBetweenTwoPoints)
{
	std::mt19937 random(20240607);
	std::uniform_real_distribution<double> anyValue(-3.0, 3.0);
	std::uniform_int_distribution<std::int64_t> anyTicks(1, 5'000'000'000);
	for (int trial = 0; trial < 200; ++trial)
	{
		SCOPED_TRACE(trial);
		std::vector<AutomationPoint> points;
		SN::TickTime time;
		for (int i = 0; i < 12; ++i)
		{
			// Now and then a repeated value, and a step of a few ticks beside long ones.
			double const value = i > 0 && random() % 4 == 0 ? points.back().mValue : anyValue(random);
			points.push_back({time, value, random() % 4 ? eSmooth : eLinear});
			time += SN::TickTime::FromTicks(random() % 5 ? anyTicks(random) : 1 + trial % 7);
		}
		AutomationCurve const curve(points);
		for (std::size_t i = 0; i + 1 < points.size(); ++i)
		{
			double const direction = points[i + 1].mValue - points[i].mValue;
			double last = points[i].mValue;
			EXPECT_EQ(curve.GetValue(points[i].mTime), last);
			std::int64_t const ticks = (points[i + 1].mTime - points[i].mTime).GetTicks();
			for (std::int64_t step = 0; step <= 100; ++step)
			{
				double const value =
					curve.GetValue(points[i].mTime + SN::TickTime::FromTicks(ticks / 100 * step));
				EXPECT_GE((value - last) * (direction < 0.0 ? -1.0 : 1.0), -1e-14);
				EXPECT_EQ(std::clamp(value, std::min(points[i].mValue, points[i + 1].mValue),
							  std::max(points[i].mValue, points[i + 1].mValue)),
					value);
				last = value;
			}
			EXPECT_NEAR(curve.GetValue(points[i + 1].mTime - SN::TickTime::FromTicks(1)),
				points[i + 1].mValue, ticks < 1000 ? 6.0 : 1e-2);
		}
	}
}

TEST(AutomationCurve, PointsComeInAnyOrderAndTheLastOfATimeCounts)
{
	AutomationCurve const curve =
		MakeCurve({{2, 7, eHold}, {0, 1, eLinear}, {1, 100, eHold}, {1, 3, eLinear}, {2, 5, eHold}});
	std::vector<Point> const sorted{{0, 1, eLinear}, {1, 3, eLinear}, {2, 5, eHold}};
	for (int step = -8; step <= 24; ++step)
	{
		double const seconds = step / 8.0;
		EXPECT_EQ(curve.GetValue(SN::TickTime::FromSeconds(seconds)), GetExpected(sorted, seconds))
			<< seconds;
	}
}

TEST(AutomationCurve, RefusesPointsThatAreNone)
{
	constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
	SN::TickTime const second = SN::TickTime::FromSeconds(1.0);
	struct Case
	{
		AutomationPoint mPoint;
		AutomationScale mScale;
		char const* mReason;
	};
	Case const cases[] = {
		{{second, kNaN}, AutomationScale::kLinear, "point 2 of the curve has a value"},
		{{second, kNaN}, AutomationScale::kDecibels, "point 2 of the curve has a value"},
		{{second, kInfinity}, AutomationScale::kLinear, "not a finite number"},
		{{second, -kInfinity}, AutomationScale::kLinear, "not a finite number"},
		{{second, kInfinity}, AutomationScale::kDecibels, "not a finite number"},
		{{second, 1e39}, AutomationScale::kLinear, "not a finite number"},
		{{second, 800.0}, AutomationScale::kDecibels, "not a finite number"},
		{{SN::kTimeMax, 0.0}, AutomationScale::kLinear, "point 2 of the curve is outside"},
		{{-SN::kTimeMax, 0.0}, AutomationScale::kLinear, "outside the timeline"},
		{{SN::kTimeNotATime, 0.0}, AutomationScale::kLinear, "outside the timeline"},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(&test - cases);
		std::vector<AutomationPoint> const points{{SN::kTimeZero, 0.0}, test.mPoint};
		EXPECT_THAT(GetRefusalOf([&] { AutomationCurve(points, test.mScale); }, HostError::Kind::kRequest),
			HasSubstr(test.mReason));
	}
}

} // namespace SonaroHost::Testing::AutomationCurveTest
