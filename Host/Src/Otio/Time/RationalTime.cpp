#include "SonaroHost/Otio/RationalTime.h"

#include <cmath>
#include <optional>

namespace SonaroHost::Otio
{

namespace
{

// Whole rates that are pulled down by 1000 / 1001 in use: those of pictures, and of the sound beside them.
constexpr std::int64_t kPulledRates[] = {24, 30, 48, 60, 72, 90, 96, 100, 120, 240, 44100, 48000, 96000};
// 23.98, with two decimals only, is 1.7e-4 away from 24000 / 1001; 24 itself is 1e-3 away.
constexpr double kTolerance = 2.0e-4;

std::optional<Ratio> FindPulledRate(double inRate)
{
	for (std::int64_t const whole : kPulledRates)
	{
		double const pulled = static_cast<double>(whole) * 1000.0 / 1001.0;
		if (std::abs(inRate - pulled) <= kTolerance * pulled)
		{
			return Ratio(whole * 1000, 1001);
		}
	}
	return std::nullopt;
}

} // namespace

Ratio ToExactRate(double inRate)
{
	bool const isWhole = inRate == std::floor(inRate);
	if (auto const pulled = isWhole ? std::nullopt : FindPulledRate(inRate))
	{
		return *pulled;
	}
	return Ratio::FromDouble(inRate);
}

Ratio ToSeconds(RationalTime const& inTime)
{
	return Ratio::FromDouble(inTime.mValue) / ToExactRate(inTime.mRate);
}

std::int64_t ToSamples(Ratio const& inSeconds, int inSampleRate)
{
	return inSeconds.RoundTimes(inSampleRate);
}

} // namespace SonaroHost::Otio
