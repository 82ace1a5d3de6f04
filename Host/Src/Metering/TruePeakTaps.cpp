#include "TruePeakTaps.h"

#include "zorvcore/math/Elementary.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>

namespace SonaroHost
{

namespace
{

using Taps = std::vector<double>;
using zorvaccelerate::utility::InterpolationTaps;

// A tap of the filter at inFactor times the rate.
double GetTap(std::size_t inIndex, std::size_t inFactor)
{
	constexpr double kMiddle = (kTruePeakTaps - 1) / 2.0;
	double const angle =
		std::numbers::pi * (static_cast<double>(inIndex) - kMiddle) / static_cast<double>(inFactor);
	double const sinc = angle == 0.0 ? 1.0 : zorvcore::math::Sin(angle) / angle;
	double const turn = 2.0 * std::numbers::pi * static_cast<double>(inIndex) / (kTruePeakTaps - 1);
	return sinc * 0.5 * (1.0 - zorvcore::math::Cos(turn));
}

double SumMagnitudes(Taps const& inTaps)
{
	return std::accumulate(inTaps.begin(), inTaps.end(), 0.0,
		[](double inSum, double inTap) { return inSum + std::fabs(inTap); });
}

// A point is the straight line between two samples in the middle, at the filter's own centre of gravity and times its
// gain, and what the rest of the taps makes of second differences: a sequence whose sum and first moment are 0 is
// summed up twice for that.
double GetCurvature(Taps const& inTaps)
{
	double const gain = std::accumulate(inTaps.begin(), inTaps.end(), 0.0);
	double moment = 0.0;
	for (std::size_t i = 0; i < inTaps.size(); ++i)
	{
		moment += inTaps[i] * static_cast<double>(i);
	}
	std::size_t const middle = inTaps.size() / 2 - 1;
	double const fraction = moment / gain - static_cast<double>(middle);
	Taps rest = inTaps;
	rest[middle] -= gain * (1.0 - fraction);
	rest[middle + 1] -= gain * fraction;
	std::partial_sum(rest.begin(), rest.end(), rest.begin());
	std::partial_sum(rest.begin(), rest.end(), rest.begin());
	return SumMagnitudes(rest);
}

// The bounds are rounded up.
void RaiseTo(double inValue, float& ioBound)
{
	ioBound = std::max(ioBound, std::nextafter(static_cast<float>(inValue), 2.0f));
}

void RaiseBounds(Taps const& inTaps, InterpolationTaps& ioTaps)
{
	auto const middle = static_cast<std::ptrdiff_t>(inTaps.size() / 2);
	constexpr auto kMiddle = static_cast<std::ptrdiff_t>(InterpolationTaps::kMiddlePairs);
	Taps const inside(inTaps.begin() + middle - kMiddle, inTaps.begin() + middle + kMiddle);
	double const norm = SumMagnitudes(inTaps);
	RaiseTo(norm, ioTaps.mNorm);
	RaiseTo(std::accumulate(inTaps.begin(), inTaps.end(), 0.0), ioTaps.mGain);
	RaiseTo(GetCurvature(inTaps), ioTaps.mCurvature);
	RaiseTo(norm - SumMagnitudes(inside), ioTaps.mOuterNorm);
}

} // namespace

std::size_t GetTruePeakFactor(double inSampleRate)
{
	double const rate = std::round(inSampleRate);
	return rate < 96000.0 ? 4 : rate < 192000.0 ? 2 : 1;
}

std::vector<double> GetTruePeakPhase(std::size_t inPhase, std::size_t inFactor)
{
	Taps taps;
	for (std::size_t index = inPhase; index < kTruePeakTaps; index += inFactor)
	{
		taps.push_back(GetTap(index, inFactor));
	}
	return taps;
}

InterpolationTaps GetTruePeakTaps(std::size_t inFactor)
{
	Taps const halfway = GetTruePeakPhase(inFactor / 2, inFactor);
	InterpolationTaps taps{};
	taps.mPairs = static_cast<unsigned>(halfway.size() / 2);
	RaiseBounds(halfway, taps);
	for (std::size_t pair = 0; pair < taps.mPairs; ++pair)
	{
		taps.mHalfway[pair] = static_cast<float>(halfway[taps.mPairs - 1 - pair]);
	}
	if (inFactor == 4)
	{
		Taps const quarter = GetTruePeakPhase(1, inFactor);
		RaiseBounds(quarter, taps);
		for (std::size_t pair = 0; pair < taps.mPairs; ++pair)
		{
			double const newer = quarter[taps.mPairs - 1 - pair];
			double const older = quarter[taps.mPairs + pair];
			taps.mEven[pair] = static_cast<float>((newer + older) / 2.0);
			taps.mOdd[pair] = static_cast<float>((newer - older) / 2.0);
		}
	}
	return taps;
}

} // namespace SonaroHost
