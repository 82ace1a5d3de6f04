#include "SonaroHost/Base/Ratio.h"

#include "WideNumber.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <optional>
#include <utility>

namespace SonaroHost
{

namespace
{

constexpr Wide kLargest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kSaturated = std::int64_t{1} << 62;
constexpr int kFinestBits = 44;

struct WideRatio
{
	Wide mNumerator;
	// The denominator is above 0 and below 2^126, as the numerator's magnitude is below 2^127.
	Wide mDenominator;
};

WideRatio Reduce(WideRatio const& inRatio)
{
	Wide a = inRatio.mNumerator < 0 ? -inRatio.mNumerator : inRatio.mNumerator;
	Wide b = inRatio.mDenominator;
	while (b != 0)
	{
		Wide const rest = a % b;
		a = b;
		b = rest;
	}
	return {inRatio.mNumerator / a, inRatio.mDenominator / a};
}

// The nearest multiple of the finest power of two, up to 2^-44, whose numerator fits.
Ratio Approximate(WideRatio const& inRatio)
{
	Wide result = FloorDivide(inRatio.mNumerator, inRatio.mDenominator);
	if (result >= kSaturated || result < -Wide{kSaturated})
	{
		return Ratio(result > 0 ? kSaturated : -kSaturated);
	}
	Wide rest = inRatio.mNumerator - result * inRatio.mDenominator;
	int bits = 0;
	while (bits < kFinestBits && result < kSaturated / 2 && result >= -Wide{kSaturated / 2})
	{
		rest *= 2;
		Wide const bit = rest >= inRatio.mDenominator ? 1 : 0;
		rest -= bit * inRatio.mDenominator;
		result = 2 * result + bit;
		++bits;
	}
	result += 2 * rest >= inRatio.mDenominator ? 1 : 0;
	return Ratio(static_cast<std::int64_t>(result), std::int64_t{1} << bits);
}

bool Fits(WideRatio const& inRatio)
{
	return inRatio.mNumerator <= kLargest && inRatio.mNumerator >= -kLargest &&
		   inRatio.mDenominator <= kLargest;
}

// Halves up; inA has 64 bits, and inB is above 0.
std::int64_t RoundQuotient(Wide inA, Wide inB)
{
	return static_cast<std::int64_t>(FloorDivide(2 * inA + inB, 2 * inB));
}

Ratio ToRatio(WideRatio const& inRatio)
{
	// Divisions of 128 bits take ten times as long as those of 64, which nearly all timelines do with.
	WideRatio const ratio = Fits(inRatio) ? inRatio : Reduce(inRatio);
	return Fits(ratio) ? Ratio(static_cast<std::int64_t>(ratio.mNumerator),
							 static_cast<std::int64_t>(ratio.mDenominator))
					   : Approximate(ratio);
}

// The best continued fraction p / q of a number from 0 to 1, q up to inLargest, that is within inTolerance.
std::optional<Ratio> FindSimplest(double inFraction, double inTolerance, std::int64_t inLargest)
{
	std::int64_t numerator = 0;
	std::int64_t denominator = 1;
	std::int64_t nextNumerator = 1;
	std::int64_t nextDenominator = 0;
	double rest = inFraction;
	for (;;)
	{
		// The recurrence is h[n] = a[n] h[n - 1] + h[n - 2], beginning with 0 / 1 and 1 / 0.
		auto const term = static_cast<std::int64_t>(std::min(std::floor(rest), 1.0e9));
		std::int64_t const newNumerator = term * nextNumerator + numerator;
		std::int64_t const newDenominator = term * nextDenominator + denominator;
		if (newDenominator > inLargest)
		{
			return std::nullopt;
		}
		numerator = nextNumerator;
		denominator = nextDenominator;
		nextNumerator = newNumerator;
		nextDenominator = newDenominator;
		double const quotient = static_cast<double>(nextNumerator) / static_cast<double>(nextDenominator);
		if (std::abs(quotient - inFraction) <= inTolerance)
		{
			return Ratio(nextNumerator, nextDenominator);
		}
		rest = 1.0 / (rest - std::floor(rest));
	}
}

} // namespace

Ratio::Ratio(std::int64_t inNumerator, std::int64_t inDenominator)
{
	if (inDenominator == 1)
	{
		mNumerator = inNumerator;
		return;
	}
	// One division makes both numbers small, where the steps of a greatest common divisor go bit by bit.
	std::int64_t const rest = inDenominator == -1 ? 0 : inNumerator % inDenominator;
	std::int64_t const divisor = std::gcd(rest, inDenominator) * (inDenominator < 0 ? -1 : 1);
	mNumerator = inNumerator / divisor;
	mDenominator = inDenominator / divisor;
}

Ratio Ratio::FromDouble(double inValue)
{
	constexpr double kLargestWhole = 4611686018427387904.0; // 2^62
	constexpr std::int64_t kLargestDenominator = 100000;
	if (std::abs(inValue) >= kLargestWhole)
	{
		return Ratio(inValue < 0.0 ? -kSaturated : kSaturated);
	}
	double const whole = std::floor(inValue);
	double const fraction = inValue - whole;
	auto const wholePart = Ratio(static_cast<std::int64_t>(whole));
	if (fraction == 0.0)
	{
		return wholePart;
	}
	double const tolerance = 4.0 * std::abs(inValue) * std::numeric_limits<double>::epsilon();
	if (auto const simple = FindSimplest(fraction, tolerance, kLargestDenominator))
	{
		return wholePart + *simple;
	}
	constexpr int kBits = 32;
	return wholePart + Ratio(std::llround(std::ldexp(fraction, kBits)), std::int64_t{1} << kBits);
}

Ratio Ratio::FromExactDouble(double inValue)
{
	constexpr int kWidest = 30;
	int exponent = 0;
	double const mantissa = std::frexp(std::abs(inValue), &exponent);
	if (inValue == 0.0 || exponent > kWidest || exponent <= -kWidest)
	{
		return FromDouble(inValue);
	}
	constexpr int kDigits = std::numeric_limits<double>::digits;
	// The number is numerator / denominator to the last bit.
	Wide numerator = static_cast<Wide>(std::ldexp(mantissa, kDigits));
	Wide denominator = Wide{1} << (kDigits - exponent);
	Wide h[] = {1, 0};
	Wide k[] = {0, 1};
	for (;;)
	{
		Wide const term = numerator / denominator;
		h[1] = std::exchange(h[0], term * h[0] + h[1]);
		k[1] = std::exchange(k[0], term * k[0] + k[1]);
		if (static_cast<double>(h[0]) / static_cast<double>(k[0]) == std::abs(inValue))
		{
			Ratio const found(static_cast<std::int64_t>(h[0]), static_cast<std::int64_t>(k[0]));
			return inValue < 0.0 ? -found : found;
		}
		numerator = std::exchange(denominator, numerator - term * denominator);
	}
}

std::int64_t Ratio::Round() const
{
	if (mDenominator == 1)
	{
		return mNumerator;
	}
	return RoundQuotient(mNumerator, mDenominator);
}

std::int64_t Ratio::RoundTimes(std::int64_t inFactor) const
{
	Wide const numerator = Wide{mNumerator} * inFactor;
	return Fits(WideRatio{numerator, mDenominator}) ? RoundQuotient(numerator, mDenominator)
													: (*this * Ratio(inFactor)).Round();
}

std::int64_t Ratio::Floor() const
{
	return static_cast<std::int64_t>(FloorDivide(mNumerator, mDenominator));
}

Ratio operator+(Ratio const& inA, Ratio const& inB)
{
	constexpr Ratio kZero(0);
	if (inA == kZero || inB == kZero)
	{
		return inA == kZero ? inB : inA;
	}
	if (inA.mDenominator == inB.mDenominator)
	{
		return ToRatio({Wide{inA.mNumerator} + inB.mNumerator, inA.mDenominator});
	}
	return ToRatio({Wide{inA.mNumerator} * inB.mDenominator + Wide{inB.mNumerator} * inA.mDenominator,
		Wide{inA.mDenominator} * inB.mDenominator});
}

Ratio operator*(Ratio const& inA, Ratio const& inB)
{
	constexpr Ratio kOne(1);
	if (inA == kOne || inB == kOne)
	{
		return inA == kOne ? inB : inA;
	}
	return ToRatio({Wide{inA.mNumerator} * inB.mNumerator, Wide{inA.mDenominator} * inB.mDenominator});
}

Ratio operator/(Ratio const& inA, Ratio const& inB)
{
	if (inB == Ratio(1))
	{
		return inA;
	}
	Wide const sign = inB.mNumerator < 0 ? -1 : 1;
	return ToRatio({sign * inA.mNumerator * inB.mDenominator, sign * inA.mDenominator * inB.mNumerator});
}

Ratio Ratio::operator-() const
{
	Ratio negative = *this;
	negative.mNumerator = -mNumerator;
	return negative;
}

std::strong_ordering operator<=>(Ratio const& inA, Ratio const& inB)
{
	Wide const a = Wide{inA.mNumerator} * inB.mDenominator;
	Wide const b = Wide{inB.mNumerator} * inA.mDenominator;
	return a < b ? std::strong_ordering::less
				 : (a > b ? std::strong_ordering::greater : std::strong_ordering::equal);
}

} // namespace SonaroHost
