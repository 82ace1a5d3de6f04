#pragma once

#include <compare>
#include <cstdint>

namespace SonaroHost
{

// A fraction in lowest terms: seconds, or a rate. Sums of any usual rates stay exact, so that positions
// can be added up along a track and rounded to samples once.
//
// Range  A result whose numerator or denominator needs more than 63 bits becomes the nearest multiple of
//        2^-44 or, where that does not fit, of the finest power of two that does; from 2^62 on it saturates.
class Ratio
{
public:
	constexpr Ratio() = default;
	// A whole number.
	constexpr explicit Ratio(std::int64_t inWhole)
		: mNumerator(inWhole)
	{
	}
	// inDenominator is not 0.
	Ratio(std::int64_t inNumerator, std::int64_t inDenominator);

	// The fraction that a decimal number was meant to be: the one with the smallest denominator up to 100000
	// within four roundings of the number, otherwise the number itself to 2^-32. inValue is finite.
	static Ratio FromDouble(double inValue);
	// The simplest fraction in its continued one that rounds to the number, so that ToDouble gives the number back: for
	// speeds, of which 100 hours are counted. Magnitudes from 2^-30 to 2^30, and 0; others as FromDouble.
	static Ratio FromExactDouble(double inValue);

	// The numerator, which has the sign.
	std::int64_t GetNumerator() const { return mNumerator; }
	// The denominator, above 0.
	std::int64_t GetDenominator() const { return mDenominator; }
	// The nearest double of the quotient of both, each rounded to a double first.
	double ToDouble() const { return static_cast<double>(mNumerator) / static_cast<double>(mDenominator); }

	// The nearest whole number, halves up.
	std::int64_t Round() const;
	// That of the fraction times a factor, which takes no greatest common divisor.
	std::int64_t RoundTimes(std::int64_t inFactor) const;
	// The whole number below, for negative numbers too.
	std::int64_t Floor() const;

	friend Ratio operator+(Ratio const& inA, Ratio const& inB);
	friend Ratio operator-(Ratio const& inA, Ratio const& inB) { return inA + -inB; }
	friend Ratio operator*(Ratio const& inA, Ratio const& inB);
	// inB is not 0.
	friend Ratio operator/(Ratio const& inA, Ratio const& inB);
	Ratio operator-() const;
	Ratio& operator+=(Ratio const& inOther) { return *this = *this + inOther; }

	friend bool operator==(Ratio const&, Ratio const&) = default;
	friend std::strong_ordering operator<=>(Ratio const& inA, Ratio const& inB);

private:
	std::int64_t mNumerator = 0;
	std::int64_t mDenominator = 1;
};

} // namespace SonaroHost
