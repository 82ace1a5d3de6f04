#pragma once

#include "zorvaccelerate/PhaseVocoder.h"

namespace SN
{

// The variance of a signal over the last seconds, from a running mean and mean square.
class EnergyStatistics
{
public:
	EnergyStatistics() = default;
	// inVariance: what is reported before the first sample.
	EnergyStatistics(float inVariance, float inLimit)
		: mMeans{.mMean = 0.0f, .mMeanSquare = 0.02f, .mCount = 2.0f, .mLimit = inLimit},
		  mVariance(inVariance)
	{
	}

	// All of inCount samples but the last one, for a kernel that takes several signals side by side.
	zorvaccelerate::utility::MeansRun GetRun(float const* inSamples, unsigned inCount)
	{
		return {&mMeans, inSamples, inCount > 0 ? inCount - 1 : 0};
	}
	// The last one. The variance, which nothing else depends on, is that of the last sample.
	void Finish(float const* inSamples, unsigned inCount);

	float GetVariance() const { return mVariance; }

private:
	zorvaccelerate::utility::RunningMeans mMeans{};
	float mVariance = 0.0f;
};

} // namespace SN
