#pragma once

#include "SonaroHost/Base/Ratio.h"

#include <cstdint>

namespace SonaroHost::Otio
{

// A time as the file states it: so many units of which a second has mRate.
struct RationalTime
{
	double mValue = 0.0;
	double mRate = 1.0;

	friend bool operator==(RationalTime const&, RationalTime const&) = default;
};

// A stretch of time as the file states it.
struct TimeRange
{
	RationalTime mStartTime;
	// Never negative.
	RationalTime mDuration;

	friend bool operator==(TimeRange const&, TimeRange const&) = default;
};

// What a rate stands for. Rates that are written as decimals near n x 1000 / 1001 (23.976, 23.98, 29.97,
// 59.94, 47952.05 ...) stand for exactly that; whole rates for themselves. inRate is above 0.
Ratio ToExactRate(double inRate);

// The time in seconds.
Ratio ToSeconds(RationalTime const& inTime);

// The nearest sample of a time in seconds, halves up.
std::int64_t ToSamples(Ratio const& inSeconds, int inSampleRate);

} // namespace SonaroHost::Otio
