#pragma once

#include "SonaroHost/Base/CurveShape.h"
#include "SonaroHost/Base/Ratio.h"

#include <compare>

namespace SonaroHost
{

// A point of a SpeedCurve.
struct SpeedKey
{
	// In seconds.
	Ratio mTime;
	Ratio mSpeed = Ratio(1);
	// How the speed goes up to the next key.
	Interpolation mInterpolation = Interpolation::kLinear;

	friend auto operator<=>(SpeedKey const&, SpeedKey const&) = default;
};

} // namespace SonaroHost
