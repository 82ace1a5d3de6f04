#include "MeterBar.h"

#include "SonaroHost/Metering/LoudnessMeter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace SonaroCommand
{

namespace
{

constexpr double kFallPerSecond = 20.0;
constexpr std::chrono::milliseconds kHold(1500);

} // namespace

double RoundToTenths(double inLevel)
{
	constexpr double kTenths = 10.0;
	// Adding 0 takes the sign from a negative one.
	return std::round(inLevel * kTenths) / kTenths + 0.0;
}

void MeterBar::Update(float inPeak, Clock::time_point inNow)
{
	double const level = std::max(SonaroHost::ToDecibels(static_cast<double>(inPeak)), kFloor);
	double const passed = std::chrono::duration<double>(inNow - mLast).count();
	mLast = inNow;
	mLevel = std::max({level, mLevel - std::min(passed, 10.0) * kFallPerSecond, kFloor});
	if (level >= mHeld || inNow - mHeldSince > kHold)
	{
		mHeld = mLevel;
		mHeldSince = inNow;
	}
}

std::string MeterBar::Draw(std::size_t inColumns) const
{
	auto const place = [&](double inLevel)
	{
		double const share = std::clamp((inLevel - kFloor) / -kFloor, 0.0, 1.0);
		return static_cast<std::size_t>(std::lround(share * static_cast<double>(inColumns)));
	};
	std::string bar(inColumns, '-');
	std::fill_n(bar.begin(), place(mLevel), '#');
	if (std::size_t const held = place(mHeld); held > 0)
	{
		bar[held - 1] = '|';
	}
	return bar;
}

std::string MeterBar::DescribeHeld() const
{
	std::array<char, 16> text{};
	std::snprintf(text.data(), text.size(), "%6.1f", RoundToTenths(mHeld));
	return mHeld > kFloor ? text.data() : "     -";
}

} // namespace SonaroCommand
