#include "zorvmediatypes/TickTime.h"

#include <algorithm>
#include <cmath>

namespace zorvmediatypes
{

namespace
{

// 128-bit integers are an extension of both compilers that the project is built with.
__extension__ using Wide = __int128;
__extension__ using UnsignedWide = unsigned __int128;

constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kSmallest = std::numeric_limits<std::int64_t>::min();

std::int64_t Saturate(Wide inValue)
{
	return static_cast<std::int64_t>(std::clamp<Wide>(inValue, kSmallest, kLargest));
}

TickTime Saturated(bool inNegative)
{
	return TickTime::FromTicks(inNegative ? kSmallest : kLargest);
}

TickTime FromMagnitude(UnsignedWide inMagnitude, bool inNegative)
{
	if (inMagnitude > static_cast<UnsignedWide>(kLargest))
	{
		return Saturated(inNegative);
	}
	auto const ticks = static_cast<std::int64_t>(inMagnitude);
	return TickTime::FromTicks(inNegative ? -ticks : ticks);
}

std::uint64_t Magnitude(std::int64_t inTicks)
{
	return inTicks < 0 ? ~static_cast<std::uint64_t>(inTicks) + 1 : static_cast<std::uint64_t>(inTicks);
}

// A finite double other than 0 as mantissa * 2^exponent, the mantissa an odd-or-even whole number of
// at most 53 bits. Products and quotients of times are formed from these in whole numbers, so that
// they are exact before their one rounding and equal on every processor.
struct Decomposed
{
	explicit Decomposed(double inValue)
	{
		mMantissa = static_cast<std::uint64_t>(std::ldexp(std::frexp(std::abs(inValue), &mExponent), 53));
		mExponent -= 53;
	}

	std::uint64_t mMantissa = 0;
	int mExponent = 0;
};

// inValue / 2^inShift, nearest, halves up.
UnsignedWide ShiftRightRounding(UnsignedWide inValue, int inShift)
{
	if (inShift > 127)
	{
		return 0;
	}
	return (inValue + (UnsignedWide(1) << (inShift - 1))) >> inShift;
}

TickTime MultiplyExactly(std::int64_t inTicks, double inFactor)
{
	bool const negative = (inTicks < 0) != std::signbit(inFactor);
	Decomposed const factor(inFactor);
	// The product has at most 64 + 53 bits.
	UnsignedWide const product = UnsignedWide(Magnitude(inTicks)) * factor.mMantissa;
	if (factor.mExponent < 0)
	{
		return FromMagnitude(ShiftRightRounding(product, -factor.mExponent), negative);
	}
	// A mantissa has its top bit set: from 2^63 on the product is beyond the range whatever follows.
	if (factor.mExponent > 10 || product > static_cast<UnsignedWide>(kLargest))
	{
		return Saturated(negative);
	}
	return FromMagnitude(product << factor.mExponent, negative);
}

TickTime DivideExactly(std::int64_t inTicks, double inDivisor)
{
	bool const negative = (inTicks < 0) != std::signbit(inDivisor);
	Decomposed const divisor(inDivisor);
	UnsignedWide numerator = Magnitude(inTicks);
	UnsignedWide denominator = divisor.mMantissa;
	if (divisor.mExponent >= 0)
	{
		// From 2^(53 + 12) on the divisor is more than twice any numerator.
		if (divisor.mExponent > 12)
		{
			return TickTime();
		}
		denominator <<= divisor.mExponent;
	}
	else
	{
		// The quotient needs at most 63 bits, so a numerator beyond 63 + 53 bits saturates.
		int const shift = -divisor.mExponent;
		if (shift > 116 || (numerator >> (116 - shift)) != 0)
		{
			return Saturated(negative);
		}
		numerator <<= shift;
	}
	return FromMagnitude((numerator + denominator / 2) / denominator, negative);
}

} // namespace

TickTime TickTime::FromSeconds(double inSeconds)
{
	return FromTicks(kTicksPerSecond) * inSeconds;
}

double TickTime::GetSeconds() const
{
	return static_cast<double>(mTicks) / static_cast<double>(kTicksPerSecond);
}

TickTime TickTime::operator-() const
{
	return FromTicks(Saturate(-Wide(mTicks)));
}

TickTime TickTime::operator*(double inFactor) const
{
	if (inFactor == 1.0)
	{
		return *this;
	}
	if (std::isnan(inFactor))
	{
		return kTimeNotATime;
	}
	if (mTicks == 0 || inFactor == 0.0)
	{
		return TickTime();
	}
	if (std::isinf(inFactor))
	{
		return Saturated((mTicks < 0) != std::signbit(inFactor));
	}
	return MultiplyExactly(mTicks, inFactor);
}

TickTime TickTime::operator/(double inDivisor) const
{
	if (std::isnan(inDivisor))
	{
		return kTimeNotATime;
	}
	if (mTicks == 0 || std::isinf(inDivisor))
	{
		return TickTime();
	}
	if (inDivisor == 0.0)
	{
		return Saturated((mTicks < 0) != std::signbit(inDivisor));
	}
	return DivideExactly(mTicks, inDivisor);
}

TickTime TickTime::operator*(int inFactor) const
{
	return FromTicks(Saturate(Wide(mTicks) * inFactor));
}

double TickTime::operator/(TickTime const& inDivisor) const
{
	return static_cast<double>(mTicks) / static_cast<double>(inDivisor.mTicks);
}

TickTime& TickTime::AddFramesWidely(long long inFrames, FrameRate const& inFrameRate)
{
	mTicks = Saturate(mTicks + Wide(inFrames) * inFrameRate.GetTicksPerFrame());
	return *this;
}

TickTime& TickTime::AlignToFrame(FrameRate const& inFrameRate)
{
	if (inFrameRate.IsCountable())
	{
		mTicks = Saturate(Wide(ToFrame64(inFrameRate)) * inFrameRate.GetTicksPerFrame());
	}
	return *this;
}

int TickTime::ToFrame32(FrameRate const& inFrameRate) const
{
	return static_cast<int>(std::clamp<long long>(
		ToFrame64(inFrameRate), std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

long long TickTime::ToFrame64(FrameRate const& inFrameRate) const
{
	if (!inFrameRate.IsCountable())
	{
		return 0;
	}
	std::int64_t const ticksPerFrame = inFrameRate.GetTicksPerFrame();
	std::int64_t const towardsZero = mTicks / ticksPerFrame;
	return mTicks % ticksPerFrame < 0 ? towardsZero - 1 : towardsZero;
}

boost::rational<long long> TimeToRatioTime(TickTime inTime)
{
	return {inTime.GetTicks(), kTicksPerSecond};
}

} // namespace zorvmediatypes
