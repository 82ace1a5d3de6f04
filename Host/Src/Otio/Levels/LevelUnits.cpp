#include "LevelUnits.h"

#include "Otio/Mix/CurveReader.h"

#include "SonaroHost/Otio/Limits.h"
#include "zorvcore/math/Elementary.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace SonaroHost::Otio
{

namespace
{

template <class Function>
void ForEachValue(Curve& ioCurve, Function const& inFunction)
{
	if (ioCurve.IsConstant())
	{
		inFunction(ioCurve.mConstant);
	}
	for (Curve::Keyframe& keyframe : ioCurve.mKeyframes)
	{
		inFunction(keyframe.mValue);
	}
}

std::pair<double, double> GetExtremes(Curve& ioCurve)
{
	double smallest = kMaxSeconds;
	double largest = -kMaxSeconds;
	ForEachValue(ioCurve,
		[&smallest, &largest](double inValue)
		{
			smallest = std::min(smallest, inValue);
			largest = std::max(largest, inValue);
		});
	return {smallest, largest};
}

// True, for a place in a condition.
bool Guess(Cursor const& inLevel, char const* inText)
{
	inLevel.Tell(Note::Kind::kGuess, inText);
	return true;
}

bool ApplyToGain(Cursor const& inLevel, bool inIsDecibels, LevelUnit inUnit, Curve& ioCurve)
{
	constexpr double kMaxLinear = 4.0;
	constexpr double kLowestDecibels = -100.0;
	constexpr double kHighestDecibels = 30.0;
	auto const [smallest, largest] = GetExtremes(ioCurve);
	ioCurve.mScale = AutomationScale::kDecibels;
	if (inUnit == LevelUnit::kDecibels)
	{
		if (ioCurve.IsConstant() && ioCurve.mConstant == kLowestDecibels)
		{
			ioCurve.mConstant = -std::numeric_limits<double>::infinity();
		}
		return smallest >= kLowestDecibels && largest <= kHighestDecibels;
	}
	if (inIsDecibels || (smallest < 0.0 && inUnit == LevelUnit::kUnclear))
	{
		return largest <= kMaxGainDecibels &&
			   (inIsDecibels ||
				   Guess(inLevel, "a gain without a unit, with a negative value, is taken as decibels"));
	}
	ioCurve.mScale = AutomationScale::kLinear;
	if (inUnit == LevelUnit::kLinear)
	{
		return smallest >= 0.0 && largest <= zorvcore::math::Exp10(kMaxGainDecibels / 20.0);
	}
	return largest > 0.0 && largest <= kMaxLinear &&
		   Guess(inLevel, "a gain without a unit, from 0 to 4, is taken as a linear factor (1 is 0 dB)");
}

bool ApplyToPan(Cursor const& inLevel, bool inAreFractions, LevelUnit inUnit, Curve& ioCurve)
{
	constexpr double kFullPercents = 100.0;
	auto const [smallest, largest] = GetExtremes(ioCurve);
	if (inUnit == LevelUnit::kPercent)
	{
		ForEachValue(ioCurve, [](double& ioValue) { ioValue /= kFullPercents; });
		return smallest >= -kFullPercents && largest <= kFullPercents;
	}
	if (inAreFractions)
	{
		ForEachValue(ioCurve, [](double& ioValue) { ioValue = 2.0 * ioValue - 1.0; });
		return smallest >= 0.0 && largest <= 1.0;
	}
	return smallest >= -1.0 && largest <= 1.0 && (smallest < 0.0 || largest == 0.0) &&
		   Guess(inLevel, "a pan without a unit is taken as -1 (left) to 1 (right)");
}

// True is 0, as a factor.
bool ApplyToMute(Curve& ioCurve)
{
	bool areSwitches = true;
	ForEachValue(ioCurve,
		[&areSwitches](double& ioValue)
		{
			areSwitches = areSwitches && (ioValue == 0.0 || ioValue == 1.0);
			ioValue = 1.0 - ioValue;
		});
	for (Curve::Keyframe& keyframe : ioCurve.mKeyframes)
	{
		keyframe.mInterpolation = Interpolation::kHold;
	}
	return areSwitches;
}

} // namespace

bool ApplyUnit(Cursor const& inLevel, LevelName const& inName, LevelShape const& inShape, bool inAreFractions,
	Curve& ioCurve)
{
	switch (inName.mTarget)
	{
	case LevelTarget::kGain:
		return ApplyToGain(inLevel, inName.mIsDecibels, inShape.mGainUnit, ioCurve);
	case LevelTarget::kPan:
		return ApplyToPan(inLevel, inAreFractions, inShape.mPanUnit, ioCurve);
	case LevelTarget::kMute:
		return ApplyToMute(ioCurve);
	default:
		return false;
	}
}

} // namespace SonaroHost::Otio
