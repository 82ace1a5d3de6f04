#pragma once

#include "SonaroHost/Base/SpeedKey.h"

#include <boost/multiprecision/cpp_int.hpp>

#include <cstddef>
#include <vector>

namespace SonaroHost
{

// A fraction of any length.
using Exact = boost::multiprecision::cpp_rational;

Exact ToExact(Ratio const& inRatio);
// The nearest Ratio: exact where it fits in, otherwise a multiple of 2^-44 or of a coarser power of two.
Ratio RoundToRatio(Exact const& inNumber);

// The positions along a speed curve, from time 0 on.
//
// Meaning  The ways up to the keys are added up once, as fractions of one denominator, which may have many digits.
//          Positions are exact where their denominator is at most 2^126, otherwise rounded to 2^-256, so that it takes
//          no longer to work with them, however many keys there are.
// Times    In seconds.
class CurveIntegral
{
public:
	// At least one key, in rising order of time, no two at one time.
	explicit CurveIntegral(std::vector<SpeedKey> const& inKeys);

	Exact FindAtKey(std::size_t inKey) const { return Find(mKeys[inKey].mTime); }
	Exact Find(Ratio const& inTime) const;
	// From one time to another, exact, of as many digits as it has.
	Exact FindWay(Ratio const& inFrom, Ratio const& inTo) const;

private:
	using Integer = boost::multiprecision::cpp_int;

	// A fraction that may not be in its lowest terms; the denominator is above 0.
	struct Fraction
	{
		Integer mNumerator;
		Integer mDenominator;
	};
	// A key, and the way from there on.
	struct Place
	{
		std::size_t mKey;
		Exact mRest;
	};

	static Exact Simplify(Fraction const& inFraction);
	Place FindPlace(Ratio const& inTime) const;
	Fraction Subtract(Place const& inTo, Place const& inFrom) const;

	std::vector<SpeedKey> mKeys;
	// The way from the first key to each key, by the denominator.
	std::vector<Integer> mSums;
	Integer mDenominator = 1;
	Place mOrigin;
};

} // namespace SonaroHost
