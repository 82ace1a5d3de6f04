#include "SonaroHost/Base/FadeShape.h"

#include "zorvcore/math/Elementary.h"

#include <cmath>
#include <numbers>

namespace SonaroHost
{

double GetFadeGain(FadeShape inShape, double inProgress)
{
	// Written so that what is not a number is silence.
	if (!(inProgress > 0.0))
	{
		return 0.0;
	}
	if (inProgress >= 1.0)
	{
		return 1.0;
	}
	switch (inShape)
	{
	case FadeShape::kLinear:
		return inProgress;
	case FadeShape::kEqualPower:
		return zorvcore::math::Sin(inProgress * std::numbers::pi / 2.0);
	case FadeShape::kSCurve:
		return inProgress * inProgress * (3.0 - 2.0 * inProgress);
	}
	return inProgress;
}

float GetFadeGain(FadeShape inShape, std::int64_t inFrame, std::int64_t inFrames)
{
	return static_cast<float>(
		GetFadeGain(inShape, static_cast<double>(inFrame) / static_cast<double>(inFrames)));
}

} // namespace SonaroHost
