#include "zorvcore/math/Elementary.h"

#include "DoubleDouble.h"

#include <array>
#include <cmath>
#include <limits>

namespace zorvcore::math
{

namespace
{

// pi and the logarithms of 2 and 10, as far as they go.
constexpr DoubleDouble kPi{3.141592653589793116, 1.224646799147353207e-16};
constexpr DoubleDouble kLn2{0.69314718055994528623, 2.319046813846299558e-17};
constexpr DoubleDouble kLn10{2.302585092994045901, -2.170756223382249351e-16};

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Tables are made by Taylor's series when this is compiled.

struct SineAndCosine
{
	DoubleDouble mSine;
	DoubleDouble mCosine;
};

constexpr SineAndCosine SumSeries(DoubleDouble const& inAngle)
{
	constexpr int kTerms = 36;
	SineAndCosine result{{}, {1.0, 0.0}};
	DoubleDouble term{1.0, 0.0};
	for (int n = 1; n < kTerms; ++n)
	{
		term = term * inAngle / DoubleDouble{static_cast<double>(n)};
		DoubleDouble& sum = n % 2 == 1 ? result.mSine : result.mCosine;
		sum = sum + (n % 4 < 2 ? term : -term);
	}
	return result;
}

// Angles of kStepsInTurn to a turn.
constexpr int kStepsInTurn = 128;

constexpr std::array<SineAndCosine, kStepsInTurn> MakeSines()
{
	std::array<SineAndCosine, kStepsInTurn> table{};
	constexpr unsigned kQuarter = kStepsInTurn / 4;
	for (unsigned i = 0; i < kQuarter; ++i)
	{
		SineAndCosine const first =
			SumSeries(kPi * DoubleDouble{static_cast<double>(i) / (kStepsInTurn / 2)});
		table[i] = first;
		table[i + kQuarter] = {first.mCosine, -first.mSine};
		table[i + 2 * kQuarter] = {-first.mSine, -first.mCosine};
		table[i + 3 * kQuarter] = {-first.mCosine, first.mSine};
	}
	return table;
}

constexpr auto kSines = MakeSines();

// 2^(i / kStepsInOctave).
constexpr int kStepsInOctave = 128;

constexpr std::array<DoubleDouble, kStepsInOctave> MakePowers()
{
	std::array<DoubleDouble, kStepsInOctave> table{};
	for (unsigned i = 0; i < kStepsInOctave; ++i)
	{
		DoubleDouble const exponent = kLn2 * DoubleDouble{static_cast<double>(i) / kStepsInOctave};
		DoubleDouble term{1.0, 0.0};
		DoubleDouble sum{1.0, 0.0};
		for (int n = 1; n < 30; ++n)
		{
			term = term * exponent / DoubleDouble{static_cast<double>(n)};
			sum = sum + term;
		}
		table[i] = sum;
	}
	return table;
}

constexpr auto kPowers = MakePowers();

// Logarithms of i / kStepsInUnit, by twice the inverse hyperbolic tangent of (x - 1) / (x + 1). From the square root of a
// half to that of 2 alone.
constexpr int kStepsInUnit = 128;
constexpr int kLowest = 90;
constexpr int kHighest = 182;

constexpr std::array<DoubleDouble, kHighest + 1> MakeLogarithms()
{
	std::array<DoubleDouble, kHighest + 1> table{};
	for (int i = kLowest; i <= kHighest; ++i)
	{
		DoubleDouble const part = DoubleDouble{static_cast<double>(i - kStepsInUnit)} /
								  DoubleDouble{static_cast<double>(i + kStepsInUnit)};
		DoubleDouble const square = part * part;
		DoubleDouble power = part;
		DoubleDouble& sum = table[static_cast<unsigned>(i)];
		for (int n = 1; n < 50; n += 2)
		{
			sum = sum + power / DoubleDouble{static_cast<double>(n) / 2.0};
			power = power * square;
		}
	}
	return table;
}

constexpr auto kLogarithms = MakeLogarithms();

// The nearest whole number, halves to even, in the default rounding; magnitudes up to 2^51.
double RoundToWhole(double inValue)
{
	constexpr double kShift = 0x1.8p52;
	return (inValue + kShift) - kShift;
}

// A number as steps of a constant and what is left, with the constant in two parts of 32 bits, of which multiples are
// exact, and a rest.
struct Steps
{
	int mCount;
	DoubleDouble mRest;
};

class StepSize
{
public:
	constexpr explicit StepSize(DoubleDouble const& inSize, DoubleDouble const& inEnd)
		: mInverse(1.0 / inSize.mHigh),
		  mFirst(Cut(inSize.mHigh)),
		  mSecond(Cut((inSize.mHigh - mFirst) + inSize.mLow)),
		  mThird((((inSize.mHigh - mFirst) - mSecond) + inSize.mLow) + inEnd.mHigh)
	{
	}

	Steps Count(double inValue) const
	{
		double const count = RoundToWhole(inValue * mInverse);
		DoubleDouble const first = AddExactly(inValue - count * mFirst, -(count * mSecond));
		DoubleDouble const rest = AddOrdered(first.mHigh, first.mLow - count * mThird);
		return {static_cast<int>(count), rest};
	}

private:
	static constexpr double Cut(double inValue)
	{
		constexpr double kSplitter = 2097153.0;
		double const big = kSplitter * inValue;
		return big - (big - inValue);
	}

	double mInverse;
	double mFirst;
	double mSecond;
	double mThird;
};

constexpr StepSize kAngleStep({kPi.mHigh * 2.0 / kStepsInTurn, kPi.mLow * 2.0 / kStepsInTurn},
	{-2.994769809718339666e-33 * 2.0 / kStepsInTurn});
constexpr StepSize kExponentStep(
	{kLn2.mHigh / kStepsInOctave, kLn2.mLow / kStepsInOctave}, {5.707708438416212066e-34 / kStepsInOctave});

// inAngle: finite. The sine of the angle and of what lies inQuarters quarters of a turn after it.
double GetSine(double inAngle, int inQuarters)
{
	constexpr double kExact = 100000.0;
	double const angle = std::abs(inAngle) <= kExact ? inAngle : std::fmod(inAngle, 2.0 * kPi.mHigh);
	Steps const steps = kAngleStep.Count(angle);
	auto const index = static_cast<unsigned>(steps.mCount + inQuarters * (kStepsInTurn / 4));
	SineAndCosine const& base = kSines[index % kStepsInTurn];
	double const r = steps.mRest.mHigh;
	double const square = r * r;
	// sin(r) - r and cos(r) - 1.
	double const sine =
		r * square * (-1.0 / 6.0 + square * (1.0 / 120.0 + square * (-1.0 / 5040.0 + square / 362880.0)));
	double const cosine =
		square * (-0.5 + square * (1.0 / 24.0 + square * (-1.0 / 720.0 + square / 40320.0)));
	DoubleDouble const product = MultiplyExactly(base.mCosine.mHigh, r);
	DoubleDouble const sum = AddExactly(base.mSine.mHigh, product.mHigh);
	double const small = base.mSine.mLow + product.mLow + base.mCosine.mLow * r +
						 base.mCosine.mHigh * (steps.mRest.mLow + sine) + base.mSine.mHigh * cosine;
	return sum.mHigh + (sum.mLow + small);
}

// The power of e of a number, from -746 to 710, and of a small one that is added to it.
double GetPower(DoubleDouble const& inExponent)
{
	Steps const steps = kExponentStep.Count(inExponent.mHigh);
	double const r = steps.mRest.mHigh;
	// exp(r) - 1 - r.
	double const curved =
		r * r *
		(1.0 / 2.0 + r * (1.0 / 6.0 + r * (1.0 / 24.0 + r * (1.0 / 120.0 + r * (1.0 / 720.0 + r / 5040.0)))));
	int const octave = (steps.mCount & ~(kStepsInOctave - 1)) / kStepsInOctave;
	DoubleDouble const& base = kPowers[static_cast<unsigned>(steps.mCount - octave * kStepsInOctave)];
	double const rest = steps.mRest.mLow + inExponent.mLow;
	double const small = rest + rest * r + curved;
	DoubleDouble const product = MultiplyExactly(base.mHigh, r);
	DoubleDouble const sum = AddOrdered(base.mHigh, product.mHigh);
	double const low = sum.mLow + (product.mLow + base.mLow + base.mHigh * small + base.mLow * r);
	return std::ldexp(sum.mHigh + low, octave);
}

// inExponent: what mHigh is far beyond the ends is 0 or infinity.
double GetAnyPower(DoubleDouble const& inExponent)
{
	constexpr double kLeast = -746.0;
	constexpr double kMost = 710.0;
	if (!(inExponent.mHigh >= kLeast))
	{
		return std::isnan(inExponent.mHigh) ? inExponent.mHigh : 0.0;
	}
	return inExponent.mHigh > kMost ? kInfinity : GetPower(inExponent);
}

// inValue: finite and above 0.
DoubleDouble GetLogarithm(double inValue)
{
	constexpr double kHalfRoot = 0.70710678118654752440;
	int octave = 0;
	double part = std::frexp(inValue, &octave);
	if (part < kHalfRoot)
	{
		part *= 2.0;
		--octave;
	}
	auto const index = static_cast<int>(RoundToWhole(part * kStepsInUnit));
	double const near = static_cast<double>(index) / kStepsInUnit;
	// Both differences and sums are exact in so many bits.
	DoubleDouble const f = DoubleDouble{part - near} / AddExactly(part, near);
	double const square = f.mHigh * f.mHigh;
	double const curved =
		2.0 * f.mHigh * square * (1.0 / 3.0 + square * (1.0 / 5.0 + square * (1.0 / 7.0 + square / 9.0)));
	DoubleDouble const base =
		DoubleDouble{static_cast<double>(octave)} * kLn2 + kLogarithms[static_cast<unsigned>(index)];
	return base + (DoubleDouble{2.0 * f.mHigh, 2.0 * f.mLow} + DoubleDouble{curved});
}

// Of what has no logarithm in a number.
double GetEdgeLogarithm(double inValue)
{
	return inValue == 0.0 ? -kInfinity : inValue > 0.0 ? inValue : kNaN;
}

bool HasLogarithm(double inValue)
{
	return inValue > 0.0 && inValue < kInfinity;
}

} // namespace

double Sin(double inAngle) noexcept
{
	if (inAngle == 0.0)
	{
		return inAngle;
	}
	return std::isfinite(inAngle) ? GetSine(inAngle, 0) : kNaN;
}

double Cos(double inAngle) noexcept
{
	return std::isfinite(inAngle) ? GetSine(inAngle, 1) : kNaN;
}

double Tan(double inAngle) noexcept
{
	return Sin(inAngle) / Cos(inAngle);
}

float Sin(float inAngle) noexcept
{
	return static_cast<float>(Sin(static_cast<double>(inAngle)));
}

float Cos(float inAngle) noexcept
{
	return static_cast<float>(Cos(static_cast<double>(inAngle)));
}

double Exp(double inExponent) noexcept
{
	return GetAnyPower({inExponent});
}

double Exp2(double inExponent) noexcept
{
	bool const isFar = !(std::abs(inExponent) <= 1100.0);
	return GetAnyPower(isFar ? DoubleDouble{inExponent} : DoubleDouble{inExponent} * kLn2);
}

double Exp10(double inExponent) noexcept
{
	bool const isFar = !(std::abs(inExponent) <= 400.0);
	return GetAnyPower(isFar ? DoubleDouble{inExponent * kLn10.mHigh} : DoubleDouble{inExponent} * kLn10);
}

double Pow(double inBase, double inExponent) noexcept
{
	if (inExponent == 0.0 || inBase == 1.0)
	{
		return 1.0;
	}
	if (!HasLogarithm(inBase) || !std::isfinite(inExponent))
	{
		// What the logarithm says of 0 and infinity.
		return GetAnyPower({GetEdgeLogarithm(inBase) * inExponent});
	}
	DoubleDouble const logarithm = GetLogarithm(inBase);
	double const rough = logarithm.mHigh * inExponent;
	bool const isFar = !(std::abs(rough) <= 800.0);
	return GetAnyPower(isFar ? DoubleDouble{rough} : logarithm * DoubleDouble{inExponent});
}

float Pow(float inBase, float inExponent) noexcept
{
	return static_cast<float>(Pow(static_cast<double>(inBase), static_cast<double>(inExponent)));
}

double Log(double inValue) noexcept
{
	return HasLogarithm(inValue) ? GetLogarithm(inValue).mHigh : GetEdgeLogarithm(inValue);
}

double Log10(double inValue) noexcept
{
	return HasLogarithm(inValue) ? (GetLogarithm(inValue) / kLn10).mHigh : GetEdgeLogarithm(inValue);
}

float Log(float inValue) noexcept
{
	return static_cast<float>(Log(static_cast<double>(inValue)));
}

} // namespace zorvcore::math
