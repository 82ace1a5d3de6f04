#include "zorvmediatypes/FrameRate.h"

#include <cmath>

namespace zorvmediatypes
{

namespace
{

// The rate of so many ticks a frame, nearest; invalid for what cannot be one.
FrameRate RateOfTicks(double inTicks)
{
	// 2^63 is the first double beyond the range.
	if (!(std::abs(inTicks) < 0x1p63))
	{
		return kFrameRate_Invalid;
	}
	return FrameRate(std::llround(inTicks));
}

} // namespace

FrameRate FrameRate::FromSamplesPerSecond(double inSamplesPerSecond)
{
	return inSamplesPerSecond > 0.0 ? RateOfTicks(static_cast<double>(kTicksPerSecond) / inSamplesPerSecond)
									: kFrameRate_Invalid;
}

double FrameRate::GetSamplesPerSecond() const
{
	return IsValid() && mTicksPerFrame != 0 ? 2.54016e11 / static_cast<double>(mTicksPerFrame) : 0.0;
}

FrameRate FrameRate::operator*(double inFactor) const
{
	return IsValid() && inFactor != 0.0 ? RateOfTicks(static_cast<double>(mTicksPerFrame) / inFactor)
										: kFrameRate_Invalid;
}

FrameRate FrameRate::operator/(double inDivisor) const
{
	return IsValid() && inDivisor != 0.0 ? RateOfTicks(static_cast<double>(mTicksPerFrame) * inDivisor)
										 : kFrameRate_Invalid;
}

} // namespace zorvmediatypes
