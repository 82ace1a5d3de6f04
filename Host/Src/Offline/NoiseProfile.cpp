#include "SonaroHost/Offline/NoiseProfile.h"

#include <algorithm>

namespace SonaroHost
{

bool NoiseProfile::IsSilent() const
{
	return std::ranges::none_of(mPower, [](float inPower) { return inPower > 0.0f; });
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

bool SharedNoiseProfile::IsLearned() const
{
	std::lock_guard const lock(mMutex);
	return mProfile != nullptr;
}

} // namespace SonaroHost
