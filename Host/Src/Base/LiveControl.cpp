#include "SonaroHost/Base/LiveControl.h"

#include <algorithm>
#include <cmath>

namespace SonaroHost
{

void LiveControl::Hold(float inValue)
{
	float const whole = mFacts.mIsWhole ? std::nearbyint(inValue) : inValue;
	mHeld.store(std::clamp(whole, mFacts.mMinimum, mFacts.mMaximum), std::memory_order_relaxed);
}

std::optional<float> LiveControl::GetHeld() const
{
	float const value = mHeld.load(std::memory_order_relaxed);
	return std::isnan(value) ? std::nullopt : std::optional(value);
}

} // namespace SonaroHost
