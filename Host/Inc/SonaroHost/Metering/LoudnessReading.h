#pragma once

#include <cstdint>
#include <limits>
#include <memory>

namespace SonaroHost
{

class LoudnessSeries;

// What a meter shows of a programme. Loudness is in LUFS and minus infinity for silence, for less audio than
// its window, and where everything is below the gate of -70 LUFS.
struct LoudnessReading
{
	static constexpr double kSilent = -std::numeric_limits<double>::infinity();

	// The largest magnitude of the samples; linear, 1 being full scale.
	double mPeak = 0.0;
	// The largest magnitude of the signal through the samples; linear, 1 being full scale.
	double mTruePeak = 0.0;
	// The root mean square of all samples of all channels; linear.
	double mRMS = 0.0;
	// The loudness of the last 400 ms.
	double mMomentary = kSilent;
	// The loudness of the last 3 s.
	double mShortTerm = kSilent;
	// The loudness of everything since the start.
	double mIntegrated = kSilent;
	// Samples of all channels that are not finite or beyond 2^40, and so left out of what is measured.
	std::int64_t mLeftOutSamples = 0;
	// The loudness over time, of a meter that keeps it.
	std::shared_ptr<LoudnessSeries const> mSeries;
};

} // namespace SonaroHost
