#pragma once

#include <vector>

namespace dsp::stretch::omega
{

// A sine cardinal in a Kaiser window, by distance from its middle in samples, between whose points a straight line is
// drawn: 512 to a sample, which is exact to -106 dB.
class SincTable
{
public:
	// Zero from inHalfWidth on. inCutoff in parts of half the sample rate.
	SincTable(unsigned inHalfWidth, double inCutoff, double inBeta);

	unsigned GetHalfWidth() const { return mHalfWidth; }
	float Get(double inDistance) const
	{
		double const place = (inDistance < 0.0 ? -inDistance : inDistance) * kPointsPerSample;
		auto const index = static_cast<unsigned>(place);
		if (index + 1 >= mPoints.size())
		{
			return 0.0f;
		}
		auto const fraction = static_cast<float>(place - index);
		return mPoints[index] + (mPoints[index + 1] - mPoints[index]) * fraction;
	}

	// For reading between samples at the same rate.
	static SincTable const& ForPlaces();
	// For conversion of the rate.
	static SincTable const& ForRates();

private:
	static constexpr unsigned kPointsPerSample = 512;

	unsigned mHalfWidth;
	std::vector<float> mPoints;
};

} // namespace dsp::stretch::omega
