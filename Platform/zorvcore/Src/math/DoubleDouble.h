#pragma once

namespace zorvcore::math
{

// The exact sum of two numbers that do not overlap: some 106 bits. (T. J. Dekker, "A floating-point technique for extending
// the available precision", 1971.)
struct DoubleDouble
{
	double mHigh = 0.0;
	double mLow = 0.0;
};

// inA is 0 or the larger one.
constexpr DoubleDouble AddOrdered(double inA, double inB)
{
	double const sum = inA + inB;
	return {sum, inB - (sum - inA)};
}

constexpr DoubleDouble AddExactly(double inA, double inB)
{
	double const sum = inA + inB;
	double const part = sum - inA;
	return {sum, (inA - (sum - part)) + (inB - part)};
}

// Magnitudes up to 2^990.
constexpr DoubleDouble MultiplyExactly(double inA, double inB)
{
	// Splits a number into halves of 26 bits.
	constexpr double kSplitter = 134217729.0;
	double const bigA = kSplitter * inA;
	double const highA = bigA - (bigA - inA);
	double const lowA = inA - highA;
	double const bigB = kSplitter * inB;
	double const highB = bigB - (bigB - inB);
	double const lowB = inB - highB;
	double const product = inA * inB;
	return {product, ((highA * highB - product) + highA * lowB + lowA * highB) + lowA * lowB};
}

constexpr DoubleDouble operator+(DoubleDouble const& inA, DoubleDouble const& inB)
{
	DoubleDouble const high = AddExactly(inA.mHigh, inB.mHigh);
	DoubleDouble const low = AddExactly(inA.mLow, inB.mLow);
	DoubleDouble const sum = AddOrdered(high.mHigh, high.mLow + low.mHigh);
	return AddOrdered(sum.mHigh, sum.mLow + low.mLow);
}

constexpr DoubleDouble operator-(DoubleDouble const& inA)
{
	return {-inA.mHigh, -inA.mLow};
}

constexpr DoubleDouble operator*(DoubleDouble const& inA, DoubleDouble const& inB)
{
	DoubleDouble const product = MultiplyExactly(inA.mHigh, inB.mHigh);
	return AddOrdered(product.mHigh, product.mLow + (inA.mHigh * inB.mLow + inA.mLow * inB.mHigh));
}

constexpr DoubleDouble operator/(DoubleDouble const& inA, DoubleDouble const& inB)
{
	double const first = inA.mHigh / inB.mHigh;
	DoubleDouble const rest = inA + -(inB * DoubleDouble{first});
	double const second = rest.mHigh / inB.mHigh;
	DoubleDouble const left = rest + -(inB * DoubleDouble{second});
	return DoubleDouble{first} + AddOrdered(second, left.mHigh / inB.mHigh);
}

} // namespace zorvcore::math
