#include "KWeighting.h"

#include "zorvcore/math/Elementary.h"

#include <cmath>
#include <numbers>

namespace SonaroHost
{

namespace
{

// The analogue filters that the coefficients of BS.1770 for 48 kHz come from by the bilinear transform.
constexpr double kShelfHertz = 1681.974450955533;
constexpr double kShelfQ = 0.7071752369554196;
constexpr double kShelfDecibels = 3.999843853973347;
constexpr double kShelfExponent = 0.4996667741545416;
constexpr double kHighPassHertz = 38.13547087602444;
constexpr double kHighPassQ = 0.5003270373238773;

// The poles of a section with the denominator 1 + (pull + loss - 2) / z + (1 - loss) / z^2. Worked out without
// differences of near numbers.
struct Poles
{
	Poles(double inHertz, double inQ, double inSampleRate)
		: mTangent(zorvcore::math::Tan(std::numbers::pi * inHertz / inSampleRate)),
		  mDenominator(1.0 + mTangent / inQ + mTangent * mTangent),
		  mPull(4.0 * mTangent * mTangent / mDenominator),
		  mLoss(2.0 * mTangent / inQ / mDenominator)
	{
	}

	double mTangent;
	double mDenominator;
	double mPull;
	double mLoss;
};

} // namespace

KWeighting::KWeighting(double inSampleRate)
{
	// Below twice its frequency a filter has no place in the spectrum: the high-pass lets nothing through, and the
	// shelf is not reached.
	if (inSampleRate <= 2.0 * kHighPassHertz)
	{
		return;
	}
	Poles const highPass(kHighPassHertz, kHighPassQ, inSampleRate);
	mFilter.mPull[0] = static_cast<float>(highPass.mPull);
	mFilter.mKeep[0] = static_cast<float>(1.0 - highPass.mLoss - highPass.mPull);
	mPowerGain = 1.0;
	if (inSampleRate <= 2.0 * kShelfHertz)
	{
		return;
	}
	Poles const shelf(kShelfHertz, kShelfQ, inSampleRate);
	double const high = zorvcore::math::Exp10(kShelfDecibels / 20.0);
	double const middle = zorvcore::math::Pow(high, kShelfExponent) * shelf.mTangent / kShelfQ;
	double const squared = shelf.mTangent * shelf.mTangent;
	// The numerator is first + second / z + third / z^2, in whose terms the section's output is
	// first * x + (2 * first + second - first * (pull + loss)) * d + (first + second + third - first * pull) * v.
	double const first = (high + middle + squared) / shelf.mDenominator;
	double const slope =
		(2.0 * middle + 4.0 * squared) / shelf.mDenominator - first * (shelf.mPull + shelf.mLoss);
	double const lift = shelf.mPull * (1.0 - first);
	mFilter.mPull[1] = static_cast<float>(shelf.mPull);
	mFilter.mKeep[1] = static_cast<float>(1.0 - shelf.mLoss - shelf.mPull);
	mFilter.mSlope = static_cast<float>(slope / first);
	mFilter.mLift = static_cast<float>(lift / first);
	mPowerGain = first * first;
}

} // namespace SonaroHost
