#include "SonaroHost/Media/Stretch.h"

#include "zorvcore/math/Elementary.h"

#include <algorithm>
#include <cmath>

namespace SonaroHost
{

Ratio Stretch::GetPitchFactor(double inSemitones)
{
	// A rate of conversion with few digits needs few tables.
	constexpr std::int64_t kParts = std::int64_t{1} << 18;
	double const factor = zorvcore::math::Exp2(inSemitones / 12.0);
	return {std::llround(factor * static_cast<double>(kParts)), kParts};
}

bool Stretch::IsInRange() const
{
	double const speed = (mSpeed / mPitch).ToDouble();
	return speed >= kLowestSpeed && speed <= kHighestSpeed;
}

std::int64_t Stretch::CountFrames(std::int64_t inFileFrames) const
{
	return mRamp ? mRamp->mFrames
				 : std::max<std::int64_t>(((Ratio(inFileFrames) - mStart) / mSpeed).Round(), 0);
}

} // namespace SonaroHost
