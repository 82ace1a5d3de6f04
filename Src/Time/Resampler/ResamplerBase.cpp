#include "Time/Resampler/ResamplerBase.h"

#include <cstdint>
#include <limits>

namespace SN
{

void ResamplerBase::StoreRates(FrameRate const& inInputRate, FrameRate const& inOutputRate)
{
	mInputFrameRate = inInputRate;
	mOutputFrameRate = inOutputRate;
}

double ResamplerBase::GetRatio() const
{
	double const output = mOutputFrameRate.GetSamplesPerSecond();
	return output == 0.0 ? std::numeric_limits<double>::quiet_NaN()
						 : mInputFrameRate.GetSamplesPerSecond() / output;
}

unsigned ResamplerBase::ToCount(double inCount)
{
	constexpr unsigned kLargest = std::numeric_limits<unsigned>::max();
	return !(inCount > 0.0) ? 0
		   : inCount >= static_cast<double>(kLargest)
			   ? kLargest
			   : static_cast<unsigned>(static_cast<std::int64_t>(inCount));
}

} // namespace SN
