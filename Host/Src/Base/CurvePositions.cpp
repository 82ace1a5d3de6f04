#include "CurvePositions.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace SonaroHost
{

namespace
{

using Key = SpeedKey;
using Coefficients = std::array<Exact, FixedPolynomial::kCoefficients>;

std::int64_t RoundUp(Ratio const& inNumber)
{
	return -(-inNumber).Floor();
}

// The polynomial of x + inShift, of which inPolynomial is that of x.
Coefficients Shift(Coefficients const& inPolynomial, Exact const& inShift)
{
	// Horner's scheme, over and over.
	Coefficients shifted = inPolynomial;
	for (std::size_t first = 0; first + 1 < shifted.size(); ++first)
	{
		for (std::size_t k = shifted.size() - 1; k > first; --k)
		{
			shifted[k - 1] += shifted[k] * inShift;
		}
	}
	return shifted;
}

} // namespace

// Makes the segments, in the time of the curve.
struct CurvePositions::Maker
{
	Maker(SpeedCurve const& inCurve, Settings const& inSettings)
		: mKeys(inCurve.GetKeys()),
		  mSettings(inSettings),
		  mIntegral(inCurve.GetIntegral())
	{
	}

	// The first output at a time or after it.
	std::int64_t FindOutput(Ratio const& inTime) const
	{
		return mSettings.mOrigin + RoundUp(inTime * mSettings.mOutputRate);
	}

	Exact GetPlace(Exact const& inPosition) const
	{
		return inPosition * ToExact(mSettings.mInputRate) + ToExact(mSettings.mOffset) + mSettings.mFrame;
	}

	// With w frames of the output since a key.
	Coefficients MakePolynomial(std::size_t inKey, bool inIsBeforeFirst) const
	{
		Key const& key = mKeys[inKey];
		Exact const rate = ToExact(mSettings.mInputRate) / ToExact(mSettings.mOutputRate);
		Coefficients polynomial{GetPlace(mIntegral.FindAtKey(inKey)), rate * ToExact(key.mSpeed), 0, 0, 0};
		if (inIsBeforeFirst || inKey + 1 == mKeys.size() || key.mInterpolation == Interpolation::kHold)
		{
			return polynomial;
		}
		Key const& next = mKeys[inKey + 1];
		Exact const length = (ToExact(next.mTime) - ToExact(key.mTime)) * ToExact(mSettings.mOutputRate);
		Exact const rise = rate * (ToExact(next.mSpeed) - ToExact(key.mSpeed)) / length;
		if (key.mInterpolation == Interpolation::kLinear)
		{
			polynomial[2] = rise / 2;
			return polynomial;
		}
		polynomial[3] = rise / length;
		polynomial[4] = -rise / (2 * length * length);
		return polynomial;
	}

	Segment Make(std::size_t inKey, std::int64_t inOutputs, bool inIsBeforeFirst) const
	{
		std::int64_t const first = FindOutput(mKeys[inKey].mTime);
		Exact const sinceKey =
			first - mSettings.mOrigin - ToExact(mKeys[inKey].mTime) * ToExact(mSettings.mOutputRate);
		Coefficients polynomial = Shift(MakePolynomial(inKey, inIsBeforeFirst), sinceKey);
		std::array<double, FixedPolynomial::kCoefficients - 1> steps;
		for (std::size_t k = 0; k < steps.size(); ++k)
		{
			steps[k] = Exact(polynomial[k + 1] * (k + 1)).convert_to<double>();
		}
		if (inOutputs == 1)
		{
			// Those of keys that stand close together may be beyond what can be counted in.
			std::fill(polynomial.begin() + 1, polynomial.end(), Exact());
			std::fill(steps.begin() + 1, steps.end(), 0.0);
		}
		return {first, FixedPolynomial(polynomial), steps};
	}

	std::vector<Key> const& mKeys;
	Settings const& mSettings;
	CurveIntegral const& mIntegral;
};

CurvePositions::CurvePositions(SpeedCurve const& inCurve, Settings const& inSettings)
{
	Maker const maker(inCurve, inSettings);
	std::vector<Key> const& keys = inCurve.GetKeys();
	mSegments.push_back(maker.Make(0, 0, true));
	for (std::size_t key = 0; key < keys.size(); ++key)
	{
		bool const isLast = key + 1 == keys.size();
		std::int64_t const outputs =
			isLast ? 0 : maker.FindOutput(keys[key + 1].mTime) - maker.FindOutput(keys[key].mTime);
		if (isLast || outputs > 0)
		{
			mSegments.push_back(maker.Make(key, outputs, false));
		}
	}
	for (Ratio const& turn : inCurve.FindTurns())
	{
		mTurns.push_back(maker.FindOutput(turn));
	}
	auto const moving = std::ranges::find_if(keys, [](Key const& inKey) { return inKey.mSpeed != Ratio(); });
	mBeginsBackwards = moving != keys.end() && moving->mSpeed < Ratio();
	for (Key const& key : keys)
	{
		double const step = (key.mSpeed * inSettings.mInputRate / inSettings.mOutputRate).ToDouble();
		mLargestStep = std::max(mLargestStep, std::abs(step));
	}
}

// The first segment goes on before its first output.
CurvePositions::Segment const& CurvePositions::FindSegment(std::int64_t inOutput) const
{
	auto const next = std::upper_bound(mSegments.begin() + 1, mSegments.end(), inOutput,
		[](std::int64_t inFirst, Segment const& inSegment) { return inFirst < inSegment.mFirst; });
	return *std::prev(next);
}

double CurvePositions::GetStepIn(Segment const& inSegment, std::int64_t inOutput)
{
	auto const x = static_cast<double>(inOutput - inSegment.mFirst);
	auto const& steps = inSegment.mSteps;
	return ((steps[3] * x + steps[2]) * x + steps[1]) * x + steps[0];
}

double CurvePositions::GetStep(std::int64_t inOutput) const
{
	return GetStepIn(FindSegment(inOutput), inOutput);
}

CurvePositions::Span CurvePositions::GetSpan(std::int64_t inFirst, std::int64_t inCount) const
{
	std::int64_t const first = Find(inFirst).mWhole;
	std::int64_t const last = Find(inFirst + inCount - 1).mWhole;
	Span span{std::min(first, last), std::max(first, last) + 1};
	auto const add = [&](std::int64_t inOutput)
	{
		if (inOutput > inFirst && inOutput < inFirst + inCount)
		{
			std::int64_t const frame = Find(inOutput).mWhole;
			span = {std::min(span.mFirst, frame), std::max(span.mEnd, frame + 1)};
		}
	};
	for (auto turn = std::ranges::lower_bound(mTurns, inFirst); turn != mTurns.end(); ++turn)
	{
		if (*turn > inFirst + inCount)
		{
			break;
		}
		add(*turn - 1);
		add(*turn);
	}
	return span;
}

bool CurvePositions::IsBackwards(std::int64_t inOutput) const
{
	auto const passed = std::ranges::upper_bound(mTurns, inOutput) - mTurns.begin();
	return mBeginsBackwards != (passed % 2 != 0);
}

std::int64_t CurvePositions::FindTurn(std::int64_t inAfter, std::int64_t inEnd) const
{
	auto const turn = std::ranges::upper_bound(mTurns, inAfter);
	return turn == mTurns.end() ? inEnd : std::min(*turn, inEnd);
}

} // namespace SonaroHost
