#include "CurveIntegral.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace SonaroHost
{

namespace
{

using Key = SpeedKey;
using boost::multiprecision::cpp_int;

// Denominators up to so many bits are found, in numbers that are right to so many bits after the point.
constexpr unsigned kSimpleBits = 126;
constexpr unsigned kFineBits = 256;

cpp_int const& GetLargestWhole()
{
	static cpp_int const sLargest = std::numeric_limits<std::int64_t>::max();
	return sLargest;
}

bool Fits(cpp_int const& inNumber)
{
	return inNumber <= GetLargestWhole() && inNumber >= -GetLargestWhole();
}

// The nearest whole number, halves up.
cpp_int RoundQuotient(cpp_int const& inNumerator, cpp_int const& inDenominator)
{
	cpp_int const doubled = 2 * inNumerator + inDenominator;
	cpp_int const divisor = 2 * inDenominator;
	cpp_int const quotient = doubled / divisor;
	return quotient * divisor > doubled ? cpp_int(quotient - 1) : quotient;
}

// The way from a key on, after a time that lies before the next key.
Exact IntegrateFrom(Key const& inKey, Key const& inNext, Exact const& inPassed)
{
	Exact const speed = ToExact(inKey.mSpeed);
	Exact const length = ToExact(inNext.mTime) - ToExact(inKey.mTime);
	Exact const rise = ToExact(inNext.mSpeed) - speed;
	Exact const place = inPassed / length;
	switch (inKey.mInterpolation)
	{
	case Interpolation::kLinear:
		return inPassed * (speed + rise * place / 2);
	case Interpolation::kSmooth:
		return inPassed * (speed + rise * place * place * (1 - place / 2));
	default:
		return inPassed * speed;
	}
}

// The last convergent of a fraction from 0 on whose denominator is at most 2^126.
Exact FindConvergent(cpp_int inNumerator, cpp_int inDenominator)
{
	static cpp_int const sLargest = cpp_int(1) << kSimpleBits;
	cpp_int numerator = 1;
	cpp_int denominator = 0;
	cpp_int lastNumerator = 0;
	cpp_int lastDenominator = 1;
	while (inDenominator != 0)
	{
		cpp_int const quotient = inNumerator / inDenominator;
		lastNumerator += quotient * numerator;
		lastDenominator += quotient * denominator;
		if (lastDenominator > sLargest)
		{
			break;
		}
		numerator.swap(lastNumerator);
		denominator.swap(lastDenominator);
		inNumerator -= quotient * inDenominator;
		inNumerator.swap(inDenominator);
	}
	return {numerator, denominator};
}

} // namespace

Exact ToExact(Ratio const& inRatio)
{
	return {cpp_int(inRatio.GetNumerator()), cpp_int(inRatio.GetDenominator())};
}

Ratio RoundToRatio(Exact const& inNumber)
{
	cpp_int const numerator = boost::multiprecision::numerator(inNumber);
	cpp_int const denominator = boost::multiprecision::denominator(inNumber);
	if (Fits(numerator) && Fits(denominator))
	{
		return {static_cast<std::int64_t>(numerator), static_cast<std::int64_t>(denominator)};
	}
	constexpr int kFinestBits = 44;
	for (int bits = kFinestBits; bits >= 0; --bits)
	{
		cpp_int const rounded = RoundQuotient(numerator << static_cast<unsigned>(bits), denominator);
		if (Fits(rounded))
		{
			return {static_cast<std::int64_t>(rounded), std::int64_t{1} << bits};
		}
	}
	constexpr std::int64_t kSaturated = std::int64_t{1} << 62;
	return Ratio(numerator < 0 ? -kSaturated : kSaturated);
}

CurveIntegral::CurveIntegral(std::vector<Key> const& inKeys)
	: mKeys(inKeys),
	  mSums(1)
{
	std::vector<Exact> ways;
	for (std::size_t i = 1; i < mKeys.size(); ++i)
	{
		Exact const length = ToExact(mKeys[i].mTime) - ToExact(mKeys[i - 1].mTime);
		ways.push_back(IntegrateFrom(mKeys[i - 1], mKeys[i], length));
		cpp_int const denominator = boost::multiprecision::denominator(ways.back());
		mDenominator *= denominator / gcd(denominator, cpp_int(mDenominator % denominator));
	}
	for (Exact const& way : ways)
	{
		cpp_int const share = mDenominator / boost::multiprecision::denominator(way);
		mSums.push_back(mSums.back() + boost::multiprecision::numerator(way) * share);
	}
	mOrigin = FindPlace(Ratio());
}

Exact CurveIntegral::Find(Ratio const& inTime) const
{
	return Simplify(Subtract(FindPlace(inTime), mOrigin));
}

Exact CurveIntegral::FindWay(Ratio const& inFrom, Ratio const& inTo) const
{
	Fraction const way = Subtract(FindPlace(inTo), FindPlace(inFrom));
	return {way.mNumerator, way.mDenominator};
}

Exact CurveIntegral::Simplify(Fraction const& inFraction)
{
	cpp_int const& denominator = inFraction.mDenominator;
	if (msb(denominator) <= kFineBits)
	{
		return {inFraction.mNumerator, denominator};
	}
	// Lowest terms would take long to find. A fraction with a short denominator is a convergent of its own rounding.
	cpp_int const numerator = abs(inFraction.mNumerator);
	cpp_int const rounded = RoundQuotient(numerator << kFineBits, denominator);
	cpp_int const unit = cpp_int(1) << kFineBits;
	Exact number = FindConvergent(rounded, unit);
	bool const isExact = boost::multiprecision::numerator(number) * denominator ==
						 boost::multiprecision::denominator(number) * numerator;
	number = isExact ? number : Exact(rounded, unit);
	return inFraction.mNumerator < 0 ? Exact(-number) : number;
}

CurveIntegral::Place CurveIntegral::FindPlace(Ratio const& inTime) const
{
	auto const next = std::ranges::upper_bound(mKeys, inTime, {}, &Key::mTime);
	std::size_t const index = next == mKeys.begin() ? 0 : static_cast<std::size_t>(next - mKeys.begin()) - 1;
	Key const& key = mKeys[index];
	Exact const passed = ToExact(inTime) - ToExact(key.mTime);
	bool const isBetween = next != mKeys.begin() && next != mKeys.end();
	return {index, isBetween ? IntegrateFrom(key, *next, passed) : Exact(passed * ToExact(key.mSpeed))};
}

CurveIntegral::Fraction CurveIntegral::Subtract(Place const& inTo, Place const& inFrom) const
{
	Exact const rest = inTo.mRest - inFrom.mRest;
	cpp_int const denominator = boost::multiprecision::denominator(rest);
	cpp_int const way = mSums[inTo.mKey] - mSums[inFrom.mKey];
	return {way * denominator + boost::multiprecision::numerator(rest) * mDenominator,
		mDenominator * denominator};
}

} // namespace SonaroHost
