#include "Levels.h"

#include "SonaroHost/Metering/LoudnessMeter.h"
#include "zorvcore/math/Elementary.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace SonaroCommand
{

std::string FormatFixed(double inNumber, int inDigits)
{
	// What rounds to zero from below is shown without a sign.
	double const shown = std::fabs(inNumber) < 0.5 * zorvcore::math::Exp10(-inDigits) ? 0.0 : inNumber;
	std::array<char, 32> text{};
	std::snprintf(text.data(), text.size(), "%.*f", inDigits, shown);
	return text.data();
}

std::string FormatPeak(float inPeak)
{
	return FormatFixed(SonaroHost::ToDecibels(static_cast<double>(inPeak)), 2) + " dBFS";
}

double GetRealTimeFactor(std::int64_t inFrames, int inSampleRate, double inElapsedSeconds)
{
	return inElapsedSeconds > 0.0 ? static_cast<double>(inFrames) / inSampleRate / inElapsedSeconds : 0.0;
}

std::string DescribeRealTimeFactor(double inRealTimeFactor)
{
	return FormatFixed(inRealTimeFactor, 0) + " times faster than real time\n";
}

Json GetNumberOrSilence(double inDecibels)
{
	return std::isfinite(inDecibels) ? Json(inDecibels) : Json("-inf");
}

} // namespace SonaroCommand
