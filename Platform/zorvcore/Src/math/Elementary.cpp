#include "zorvcore/math/Elementary.h"

#include "DoubleDouble.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

namespace zorvcore::math
{

namespace
{

// pi and the logarithms of 2 and 10, as far as they go.
constexpr DoubleDouble kPi{3.141592653589793116, 1.224646799147353207e-16};
constexpr DoubleDouble kLn2{0.69314718055994528623, 2.319046813846299558e-17};
constexpr DoubleDouble kLn10{2.302585092994045901, -2.170756223382249351e-16};

constexpr DoubleDouble kPerLn10 = DoubleDouble{1.0} / kLn10;

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
			SumSeries(kPi * DoubleDouble{static_cast<double>(i) / (0.5 * kStepsInTurn)});
		table[i] = first;
		table[i + kQuarter] = {first.mCosine, -first.mSine};
		table[i + 2 * kQuarter] = {-first.mSine, -first.mCosine};
		table[i + 3 * kQuarter] = {-first.mCosine, first.mSine};
	}
	return table;
}

constexpr auto kSines = MakeSines();

// Angles of i / kStepsInRadian, a little beyond a quarter of a turn.
constexpr int kStepsInRadian = 128;
constexpr int kQuarterSteps = 206;

constexpr std::array<SineAndCosine, kQuarterSteps + 1> MakeQuarter()
{
	std::array<SineAndCosine, kQuarterSteps + 1> table{};
	SineAndCosine const step = SumSeries({1.0 / kStepsInRadian});
	SineAndCosine turned{{}, {1.0, 0.0}};
	for (SineAndCosine& entry : table)
	{
		entry = turned;
		turned = {entry.mSine * step.mCosine + entry.mCosine * step.mSine,
			entry.mCosine * step.mCosine + -(entry.mSine * step.mSine)};
	}
	return table;
}

constexpr auto kQuarter = MakeQuarter();

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

// Of a quarter of a turn, which gains of fades and panners are within: the first angle is below the second.
struct NearAngle
{
	SineAndCosine const& mBase;
	double mRest;
	// Its sine less itself, and its cosine less 1.
	double mSine;
	double mCosine;
};

// inAngle: from 0 to the table's end. What is left after the nearest entry is exact and at most 1/256.
NearAngle FindNear(double inAngle)
{
	double const step = RoundToWhole(inAngle * kStepsInRadian);
	double const r = inAngle - step * (1.0 / kStepsInRadian);
	double const square = r * r;
	return {kQuarter[static_cast<unsigned>(step)], r, r * square * (-1.0 / 6.0 + square * (1.0 / 120.0)),
		square * (-0.5 + square * (1.0 / 24.0 - square * (1.0 / 720.0)))};
}

// inAngle: from 1/8 to the table's end. Smaller sines would be less exact.
double GetNearSine(double inAngle)
{
	NearAngle const near = FindNear(inAngle);
	SineAndCosine const& base = near.mBase;
	double const turned = base.mCosine.mHigh * near.mRest;
	return base.mSine.mHigh +
		   (turned + (base.mSine.mLow + base.mCosine.mHigh * near.mSine + base.mSine.mHigh * near.mCosine));
}

// inAngle: from 0 to 1.4. Smaller cosines would be less exact.
double GetNearCosine(double inAngle)
{
	NearAngle const near = FindNear(inAngle);
	SineAndCosine const& base = near.mBase;
	double const turned = base.mSine.mHigh * near.mRest;
	return base.mCosine.mHigh -
		   (turned - (base.mCosine.mLow - base.mSine.mHigh * near.mSine + base.mCosine.mHigh * near.mCosine));
}

// inAngle: at most 1/8. Taylor's series.
double GetSmallSine(double inAngle)
{
	double const square = inAngle * inAngle;
	return inAngle +
		   inAngle * square *
			   (-1.0 / 6.0 +
				   square *
					   (1.0 / 120.0 + square * (-1.0 / 5040.0 +
												   square * (1.0 / 362880.0 - square * (1.0 / 39916800.0)))));
}

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
		r * square *
		(-1.0 / 6.0 + square * (1.0 / 120.0 + square * (-1.0 / 5040.0 + square * (1.0 / 362880.0))));
	double const cosine =
		square * (-0.5 + square * (1.0 / 24.0 + square * (-1.0 / 720.0 + square * (1.0 / 40320.0))));
	DoubleDouble const product = MultiplyExactly(base.mCosine.mHigh, r);
	DoubleDouble const sum = AddExactly(base.mSine.mHigh, product.mHigh);
	double const small = base.mSine.mLow + product.mLow + base.mCosine.mLow * r +
						 base.mCosine.mHigh * (steps.mRest.mLow + sine) + base.mSine.mHigh * cosine;
	return sum.mHigh + (sum.mLow + small);
}

// Taylor's series, in pairs, for single precision.

// inAngle: at most 1.6.
float GetQuarterSine(float inAngle)
{
	double const x = static_cast<double>(inAngle);
	double const z = x * x;
	double const square = z * z;
	double const low = (1.0 - z * (1.0 / 6.0)) + square * (1.0 / 120.0 - z * (1.0 / 5040.0));
	double const high = (1.0 / 362880.0 - z * (1.0 / 39916800.0)) +
						square * (1.0 / 6227020800.0 - z * (1.0 / 1307674368000.0));
	return static_cast<float>(x * (low + square * square * high));
}

// inAngle: at most 1.4; smaller cosines would be less exact.
float GetQuarterCosine(float inAngle)
{
	double const x = static_cast<double>(inAngle);
	double const z = x * x;
	double const square = z * z;
	double const low = (1.0 - z * (1.0 / 2.0)) + square * (1.0 / 24.0 - z * (1.0 / 720.0));
	double const high =
		(1.0 / 40320.0 - z * (1.0 / 3628800.0)) +
		square * (1.0 / 479001600.0 - z * (1.0 / 87178291200.0 - z * (1.0 / 20922789888000.0)));
	return static_cast<float>(low + square * square * high);
}

// A base, by the step of which the power is 1 / kStepsInOctave of an octave, and its natural logarithm.
struct Base
{
	StepSize mStep;
	double mLogarithm;
	// Between which powers are neither 0 nor infinity.
	double mLeast;
	double mMost;
};

constexpr DoubleDouble kSteps{static_cast<double>(kStepsInOctave)};
constexpr Base kBaseE{
	StepSize(kLn2 / kSteps, {5.707708438416212066e-34 / kStepsInOctave}), 1.0, -746.0, 710.0};
constexpr Base kBase2{StepSize({1.0 / kStepsInOctave}, {}), kLn2.mHigh, -1076.0, 1024.0};
constexpr Base kBase10{StepSize(kLn2 / kLn10 / kSteps, {}), kLn10.mHigh, -324.0, 309.0};

// inValue: not far from 1.
double Scale(double inValue, int inOctave)
{
	constexpr int kBias = 1023;
	constexpr int kMantissa = 52;
	if (inOctave <= -kBias || inOctave > kBias)
	{
		return std::ldexp(inValue, inOctave);
	}
	return inValue * std::bit_cast<double>(static_cast<std::uint64_t>(inOctave + kBias) << kMantissa);
}

// inExponent: from the least to the most; inLow is added to it.
double GetPower(Base const& inBase, double inExponent, double inLow)
{
	Steps const steps = inBase.mStep.Count(inExponent);
	double const r = steps.mRest.mHigh * inBase.mLogarithm + (steps.mRest.mLow * inBase.mLogarithm + inLow);
	// exp(r) - 1 - r.
	double const curved =
		r * r * (1.0 / 2.0 + r * (1.0 / 6.0 + r * (1.0 / 24.0 + r * (1.0 / 120.0 + r * (1.0 / 720.0)))));
	int const octave = (steps.mCount & ~(kStepsInOctave - 1)) / kStepsInOctave;
	DoubleDouble const& base = kPowers[static_cast<unsigned>(steps.mCount - octave * kStepsInOctave)];
	// All but the first is below 1/256 of it, and its roundings are as small.
	return Scale(base.mHigh + (base.mHigh * (r + curved) + base.mLow), octave);
}

double GetAnyPower(Base const& inBase, double inExponent, double inLow = 0.0)
{
	if (!(inExponent >= inBase.mLeast))
	{
		return std::isnan(inExponent) ? inExponent : 0.0;
	}
	return inExponent > inBase.mMost ? kInfinity : GetPower(inBase, inExponent, inLow);
}

// What is divided is exact, and so is the sum in two numbers.
DoubleDouble DivideBySum(double inNumber, double inA, double inB)
{
	DoubleDouble const sum = AddExactly(inA, inB);
	double const first = inNumber / sum.mHigh;
	DoubleDouble const product = MultiplyExactly(first, sum.mHigh);
	double const rest = ((inNumber - product.mHigh) - product.mLow) - first * sum.mLow;
	return {first, rest / sum.mHigh};
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
	DoubleDouble const f = DivideBySum(part - near, part, near);
	double const square = f.mHigh * f.mHigh;
	double const curved = 2.0 * f.mHigh * square *
						  (1.0 / 3.0 + square * (1.0 / 5.0 + square * (1.0 / 7.0 + square * (1.0 / 9.0))));
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
	constexpr double kSmall = 0.125;
	constexpr double kMost = static_cast<double>(kQuarterSteps) / kStepsInRadian;
	double const size = std::abs(inAngle);
	if (size <= kSmall)
	{
		// The sign of 0 stays.
		return inAngle == 0.0 ? inAngle : GetSmallSine(inAngle);
	}
	if (size <= kMost)
	{
		return std::copysign(GetNearSine(size), inAngle);
	}
	return std::isfinite(inAngle) ? GetSine(inAngle, 0) : kNaN;
}

double Cos(double inAngle) noexcept
{
	constexpr double kMost = 1.4;
	double const size = std::abs(inAngle);
	if (size <= kMost)
	{
		return GetNearCosine(size);
	}
	return std::isfinite(inAngle) ? GetSine(inAngle, 1) : kNaN;
}

double Tan(double inAngle) noexcept
{
	return Sin(inAngle) / Cos(inAngle);
}

float Sin(float inAngle) noexcept
{
	constexpr float kMost = 1.6f;
	return std::abs(inAngle) <= kMost ? GetQuarterSine(inAngle)
									  : static_cast<float>(Sin(static_cast<double>(inAngle)));
}

float Cos(float inAngle) noexcept
{
	constexpr float kMost = 1.4f;
	return std::abs(inAngle) <= kMost ? GetQuarterCosine(inAngle)
									  : static_cast<float>(Cos(static_cast<double>(inAngle)));
}

double Exp(double inExponent) noexcept
{
	return GetAnyPower(kBaseE, inExponent);
}

double Exp2(double inExponent) noexcept
{
	return GetAnyPower(kBase2, inExponent);
}

double Exp10(double inExponent) noexcept
{
	return GetAnyPower(kBase10, inExponent);
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
		return GetAnyPower(kBaseE, GetEdgeLogarithm(inBase) * inExponent);
	}
	DoubleDouble const logarithm = GetLogarithm(inBase);
	double const rough = logarithm.mHigh * inExponent;
	bool const isFar = !(std::abs(rough) <= 800.0);
	DoubleDouble const exponent = isFar ? DoubleDouble{rough} : logarithm * DoubleDouble{inExponent};
	return GetAnyPower(kBaseE, exponent.mHigh, exponent.mLow);
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
	return HasLogarithm(inValue) ? (GetLogarithm(inValue) * kPerLn10).mHigh : GetEdgeLogarithm(inValue);
}

float Log(float inValue) noexcept
{
	return static_cast<float>(Log(static_cast<double>(inValue)));
}

} // namespace zorvcore::math
