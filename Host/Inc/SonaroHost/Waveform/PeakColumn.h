#pragma once

#include <limits>

namespace SonaroHost
{

// What a column of a waveform shows of its samples: minimum, maximum and RMS.
//
// NaN        Samples that are not numbers are passed over and count as 0 in the RMS.
// Precision  Squares add up in floats over 1024 samples at a time, then in doubles: within 1e-5 of the RMS.
class PeakColumn
{
public:
	// Null for silence.
	void Add(float const* inSamples, unsigned inCount);
	void AddSilence(double inCount);
	// The samples of another column that is not empty, as if there were so many.
	void Add(PeakColumn const& inOther, double inCount);

	bool IsEmpty() const { return mCount == 0.0; }
	// 0 while nothing was added.
	float GetMinimum() const { return mMinimum <= mMaximum ? mMinimum : 0.0f; }
	float GetMaximum() const { return mMinimum <= mMaximum ? mMaximum : 0.0f; }
	float GetRms() const;

private:
	float mMinimum = std::numeric_limits<float>::infinity();
	float mMaximum = -std::numeric_limits<float>::infinity();
	double mSquares = 0.0;
	double mCount = 0.0;
};

} // namespace SonaroHost
