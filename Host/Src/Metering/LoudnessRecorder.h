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
	// The frames of a last stretch that is not whole, and the loudness of the windows up to its end.
	void AddRest(float const* inFrames, unsigned inNumFrames, double inMomentary, double inShortTerm);

	LoudnessSeries GetSeries() const;

private:
	static constexpr unsigned kPartsOfStretch = 10;
	static constexpr std::size_t kPartsOfMoment = 40;
	static constexpr std::size_t kPartsOfShortTerm = 300;

	// The parts of a stretch that are whole.
	void AddParts(float const* inFrames, unsigned inNumFrames);
	void AddPart(double inPower, double inSeconds);
	// The loudness of the last parts; minus infinity where there are not as many.
	double GetRecent(std::size_t inParts) const;

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
