#pragma once

#include "SonaroHost/Metering/LoudnessSeries.h"

#include <array>
#include <cstddef>
#include <vector>

namespace SonaroHost
{

// Takes the weighted powers of a programme for its loudness over time, and looks for the loudest windows among those
// that end with each of its parts of 10 ms.
class LoudnessRecorder
{
public:
	// inStretchFrames: the frames of 100 ms.
	LoudnessRecorder(double inSampleRate, unsigned inStretchFrames);

	// The next stretch: its mean power, and the power of each of its frames.
	void Add(double inPower, float const* inFrames);

	LoudnessSeries GetSeries() const;

private:
	static constexpr unsigned kPartsOfStretch = 10;
	static constexpr std::size_t kPartsOfMoment = 40;
	static constexpr std::size_t kPartsOfShortTerm = 300;

	void AddPart(double inPower, double inSeconds);
	// Compares the mean of the last parts with the maximum.
	void Raise(std::size_t inParts, double inSeconds, LoudnessSeries::Maximum& ioMaximum) const;

	double mSampleRate;
	unsigned mStretchFrames;
	std::vector<float> mPowers;
	// A ring of the sums over the last parts.
	std::array<double, kPartsOfShortTerm> mParts{};
	std::size_t mPart = 0;
	LoudnessSeries::Maximum mMomentary;
	LoudnessSeries::Maximum mShortTerm;
};

} // namespace SonaroHost
