#include "stretch/omega/SincTable.h"

#include "zorvcore/math/Elementary.h"

#include <cmath>
#include <numbers>

namespace dsp::stretch::omega
{

namespace
{

// The modified Bessel function of the first kind and order 0, by its power series.
double Bessel(double inArgument)
{
	double sum = 1.0;
	double term = 1.0;
	for (int k = 1; term > sum * 1e-17; ++k)
	{
		double const factor = inArgument / (2.0 * k);
		term *= factor * factor;
		sum += term;
	}
	return sum;
}

} // namespace

SincTable::SincTable(unsigned inHalfWidth, double inCutoff, double inBeta)
	: mHalfWidth(inHalfWidth)
{
	unsigned const count = inHalfWidth * kPointsPerSample;
	mPoints.reserve(count + 1);
	for (unsigned i = 0; i <= count; ++i)
	{
		double const distance = static_cast<double>(i) / kPointsPerSample;
		double const place = distance / inHalfWidth;
		double const angle = std::numbers::pi * inCutoff * distance;
		double const sinc = i == 0 ? inCutoff : inCutoff * zorvcore::math::Sin(angle) / angle;
		mPoints.push_back(
			static_cast<float>(sinc * Bessel(inBeta * std::sqrt(1.0 - place * place)) / Bessel(inBeta)));
	}
}

SincTable const& SincTable::ForPlaces()
{
	static SincTable const sTable(16, 1.0, 8.0);
	return sTable;
}

SincTable const& SincTable::ForRates()
{
	static SincTable const sTable(32, 0.91, 10.0);
	return sTable;
}

} // namespace dsp::stretch::omega
