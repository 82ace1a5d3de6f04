#include "Time/Scaler/EnergyStatistics.h"

#include <algorithm>

namespace SN
{

void EnergyStatistics::Finish(float const* inSamples, unsigned inCount)
{
	if (inCount == 0)
	{
		return;
	}
	float const x = inSamples[inCount - 1];
	float const n = std::min(std::max(mMeans.mCount, 2.0f), mMeans.mLimit);
	float const c = mMeans.mCount - 1.0f;
	float const formerMean = mMeans.mMean;
	float const formerSquare = mMeans.mMeanSquare;
	zorvaccelerate::utility::MeansRun const run{&mMeans, &x, 1};
	zorvaccelerate::utility::UpdateMeans(1, &run);
	float const mean = mMeans.mMean;
	mVariance = x * x / c + formerSquare - (x / c + formerMean) * (2.0f * mean) + n / c * (mean * mean);
}

} // namespace SN
