#include "SonaroHost/Offline/NoiseProfile.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace SonaroHost
{

bool NoiseProfile::IsSilent() const
{
	return std::ranges::none_of(mPower, [](float inPower) { return inPower > 0.0f; });
}

double NoiseProfile::GetLevel() const
{
	double most = 0.0;
	for (std::size_t first = 0; first < mPower.size(); first += mBins)
	{
		auto const power = std::span(mPower).subspan(first, mBins);
		most = std::max(most, std::accumulate(power.begin(), power.end(), 0.0));
	}
	// A noise of the power p has p times a quarter of the frame in each bin, on average.
	double const frame = 2.0 * (mBins - 1.0);
	return std::sqrt(most / mBins * 4.0 / frame);
}

SharedNoiseProfile::Profile SharedNoiseProfile::Get(std::function<Profile()> const& inLearn)
{
	std::lock_guard const lock(mMutex);
	if (!mProfile)
	{
		mProfile = inLearn();
	}
	return mProfile;
}

SharedNoiseProfile::Profile SharedNoiseProfile::Find() const
{
	std::lock_guard const lock(mMutex);
	return mProfile;
}

} // namespace SonaroHost
