#include "Fuzzing.h"
#include "SonaroHost/Automation/AutomationCurve.h"
#include "SonaroHost/Base/CurveTimes.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cmath>
#include <vector>

using namespace SonaroFuzzing;
using namespace SonaroHost;

namespace
{

constexpr std::size_t kMostPoints = 24;

// Tests in which numbers of all sizes occur, close ones among them.
std::int64_t PickTicks(FuzzedDataProvider& ioBytes)
{
	std::int64_t const ticks = ioBytes.ConsumeIntegral<std::int64_t>();
	return ticks >> ioBytes.ConsumeIntegralInRange<unsigned>(0, 62);
}

Interpolation PickInterpolation(FuzzedDataProvider& ioBytes)
{
	return ioBytes.PickValueInArray({Interpolation::kHold, Interpolation::kLinear, Interpolation::kSmooth});
}

void RequireCurve(AutomationCurve const& inCurve, SN::TickTime const& inTime)
{
	std::size_t const segment = inCurve.FindSegment(inTime);
	Require(inCurve.GetSegmentStart(segment) <= inTime && inTime <= inCurve.GetSegmentEnd(segment));
	double const value = inCurve.GetValue(inTime);
	Require(std::isfinite(value) && value == inCurve.GetValue(inTime, segment));
	Require(std::isfinite(inCurve.GetRampedValue(inTime)));
	SN::TickTime const next = inCurve.GetNextInterestingTime(inTime);
	Require(next >= inTime);
	if (next > inTime && !inCurve.IsEmpty())
	{
		// Nothing changes before it.
		SN::TickTime const before = SN::TickTime::FromTicks(next.GetTicks() - 1);
		Require(inCurve.GetValue(before) == value);
	}
	if (inCurve.IsConstant(inTime, inTime + kCurveRamp))
	{
		Require(inCurve.GetRampedValue(inTime) == inCurve.GetRampedValue(inTime + kCurveRamp));
	}
}

void TryAutomation(FuzzedDataProvider& ioBytes)
{
	AutomationScale const scale =
		ioBytes.ConsumeBool() ? AutomationScale::kDecibels : AutomationScale::kLinear;
	std::vector<AutomationPoint> points(ioBytes.ConsumeIntegralInRange<std::size_t>(0, kMostPoints));
	std::vector<SN::TickTime> times{SN::TickTime::FromTicks(0)};
	for (AutomationPoint& point : points)
	{
		point.mTime = SN::TickTime::FromTicks(PickTicks(ioBytes));
		point.mValue = ioBytes.ConsumeBool()
						   ? static_cast<double>(ioBytes.ConsumeIntegral<std::int16_t>()) / 64.0
						   : ioBytes.ConsumeFloatingPoint<double>();
		point.mInterpolation = PickInterpolation(ioBytes);
		for (std::int64_t const offset : {-1, 0, 1, 1000})
		{
			times.push_back(point.mTime + SN::TickTime::FromTicks(offset));
		}
	}
	AutomationCurve const curve(points, scale);
	AutomationCurve const whetherHeard = curve.MakeSwitch();
	for (SN::TickTime const& time : times)
	{
		RequireCurve(curve, time);
		RequireCurve(whetherHeard, time);
	}
}

// Speeds as a reader lets them through.
void TrySpeed(FuzzedDataProvider& ioBytes)
{
	constexpr std::int64_t kMostThousandths = 360'000'000;
	std::vector<std::int64_t> times(ioBytes.ConsumeIntegralInRange<std::size_t>(1, kMostPoints));
	std::generate(times.begin(), times.end(),
		[&] { return ioBytes.ConsumeIntegralInRange(-kMostThousandths, kMostThousandths); });
	std::sort(times.begin(), times.end());
	times.erase(std::unique(times.begin(), times.end()), times.end());
	std::vector<SpeedKey> keys;
	for (std::int64_t const time : times)
	{
		std::int64_t const speed = ioBytes.ConsumeIntegralInRange<std::int64_t>(-100'000, 100'000);
		keys.push_back({Ratio(time, 1000), Ratio(speed, 1000), PickInterpolation(ioBytes)});
	}
	SpeedCurve const curve(keys);
	Ratio const from(times.front() - 1000, 1000);
	Ratio const to(times.back() + 1000, 1000);
	SpeedCurve::Span const positions = curve.GetPositions(from, to);
	SpeedCurve::Span const speeds = curve.GetSpeeds(from, to);
	for (SpeedKey const& key : keys)
	{
		Require(positions.mFirst <= curve.GetPosition(key.mTime) &&
				curve.GetPosition(key.mTime) <= positions.mLast);
		Require(speeds.mFirst <= key.mSpeed && key.mSpeed <= speeds.mLast);
	}
	Require(std::ranges::is_sorted(curve.FindTurns()));
	CurveTimes const passing(curve, from, to);
	double const middle = (positions.mFirst.ToDouble() + positions.mLast.ToDouble()) / 2.0;
	auto const first = passing.FindFirst(middle);
	auto const last = passing.FindLast(middle);
	Require(first.has_value() == last.has_value() && (!first || *first <= *last));
	Require(std::isfinite(passing.GetTotalWay()));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* inData, std::size_t inSize)
{
	FuzzedDataProvider bytes(inData, inSize);
	bool const isSpeed = bytes.ConsumeBool();
	Try([&] { isSpeed ? TrySpeed(bytes) : TryAutomation(bytes); });
	return 0;
}
