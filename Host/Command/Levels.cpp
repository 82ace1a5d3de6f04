#include "Levels.h"

#include "SonaroHost/Metering/LoudnessMeter.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace SonaroCommand
{

std::string FormatDecibels(double inDecibels, int inDigits)
{
	// What rounds to zero from below is shown without a sign.
	double const shown = std::fabs(inDecibels) < 0.5 * std::pow(10.0, -inDigits) ? 0.0 : inDecibels;
	std::array<char, 32> text{};
	std::snprintf(text.data(), text.size(), "%.*f", inDigits, shown);
	return text.data();
}

std::string FormatPeak(float inPeak)
{
	return FormatDecibels(SonaroHost::ToDecibels(static_cast<double>(inPeak)), 2) + " dBFS";
}

Json GetNumberOrSilence(double inDecibels)
{
	return std::isfinite(inDecibels) ? Json(inDecibels) : Json("-inf");
}

} // namespace SonaroCommand
