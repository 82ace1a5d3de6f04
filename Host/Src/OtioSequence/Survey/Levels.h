#pragma once

#include "SonaroHost/Otio/Model.h"
#include "SonaroHost/Sequence/Chain.h"

#include <vector>

namespace SonaroHost::Otio
{

// How the times of an item's curves lie.
struct CurveTiming
{
	// The item's length, for keyframes that stand at fractions of it.
	Ratio mLength;
	// Where the item's start lies in the time of the chain.
	SN::TickTime mStart;
};

// A gain, linear; null for one that is 1 for ever.
Sequence::NumberParameter MakeGain(Curve const& inCurve, CurveTiming const& inTiming);
// The pan goes from 0, left, to 1, right.
Sequence::NumberParameter MakePan(Curve const& inCurve, CurveTiming const& inTiming);

// The keyframes of a curve in the time of the chain, with the values that they have; none for a curve that is constant.
std::vector<AutomationPoint> MakePoints(Curve const& inCurve, CurveTiming const& inTiming);

// All gains of an item: its own, or what others left in its metadata; and those of its effects.
std::vector<Sequence::Stage> MakeFaders(Item const& inItem, CurveTiming const& inTiming);

// The pan that counts of those of an item; null for none. One of others that stays in the middle is none: they
// write it everywhere.
Curve const* FindPan(Item const& inItem);

} // namespace SonaroHost::Otio
