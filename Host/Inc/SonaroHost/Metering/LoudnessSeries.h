#pragma once

#include "SonaroHost/Metering/LoudnessReading.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace SonaroHost
{

// The loudness of a programme over time.
//
// Steps    Of 100 ms, to the nearest frame. The values of a step are those at its end, in LUFS, and minus infinity
//          for silence and before the first whole window.
// Maxima   Of windows that end every 10 ms and with the programme: the momentary one lies at most 0.06 LU below that
//          of any window.
// Memory   4 bytes for each step: 144 kB for an hour of audio.
// Threads  Those of a constant.
class LoudnessSeries
{
public:
	// Where it is loudest, in LUFS.
	struct Maximum
	{
		double mLoudness = LoudnessReading::kSilent;
		// The end of the first window that is so loud, from the start of the programme; 0 where there is no whole window.
		double mSeconds = 0.0;
	};

	// inPowers: the weighted power of each step.
	LoudnessSeries(
		double inStepSeconds, std::vector<float> inPowers, Maximum inMomentary, Maximum inShortTerm);

	double GetStepSeconds() const { return mStepSeconds; }
	std::size_t GetNumSteps() const { return mPowers.size(); }

	double GetMomentary(std::size_t inStep) const;
	double GetShortTerm(std::size_t inStep) const;
	Maximum const& GetMomentaryMaximum() const { return mMomentaryMaximum; }
	Maximum const& GetShortTermMaximum() const { return mShortTermMaximum; }

	// The integrated loudness from the start up to every inStride-th step and up to the last, to 0.01 LU.
	std::vector<double> ListIntegrated(std::size_t inStride) const;

	// The loudness range in LU by EBU Tech 3342: from the 10th to the 95th percentile of the short-term loudness above
	// -70 LUFS and above 20 LU below its mean. Nothing where that is nowhere measured.
	std::optional<double> GetRange() const;

private:
	// The mean loudness of the steps up to this one.
	double GetRecent(std::size_t inStep, std::size_t inSteps) const;

	double mStepSeconds;
	std::vector<float> mPowers;
	Maximum mMomentaryMaximum;
	Maximum mShortTermMaximum;
};

} // namespace SonaroHost
