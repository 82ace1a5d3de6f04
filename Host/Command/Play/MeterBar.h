#pragma once

#include <chrono>
#include <string>

namespace SonaroCommand
{

// A level as it is shown, to a tenth: what is rounded to 0 has no sign.
double RoundToTenths(double inLevel);

// A meter in text, from -60 dBFS to full scale: it rises at once and falls by 20 dB a second, and its highest level is
// held for one and a half seconds.
class MeterBar
{
public:
	using Clock = std::chrono::steady_clock;

	// inPeak: the largest magnitude since the last call, linear.
	void Update(float inPeak, Clock::time_point inNow);

	// "######----|--" of so many columns, and the level that is held, as " -12.3".
	std::string Draw(std::size_t inColumns) const;
	std::string DescribeHeld() const;
	bool IsOver() const { return mHeld > 0.0; }

private:
	double mLevel = kFloor;
	double mHeld = kFloor;
	Clock::time_point mHeldSince;
	Clock::time_point mLast;

	static constexpr double kFloor = -60.0;
};

} // namespace SonaroCommand
