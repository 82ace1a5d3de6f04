#pragma once

#include "Sonaro/Types.h"

namespace SonaroHost::Sequence
{

// Where a time of a sequence or of an item lies in the outermost sequence: a straight line, as long as all around it have a
// constant speed.
struct OutermostTime
{
	// Nothing is known where a speed is a curve.
	bool mIsKnown = true;
	// Where the time 0 lies.
	SN::TickTime mStart = SN::kTimeZero;
	// How much time of the outermost sequence passes in a second; below 0 backwards.
	double mScale = 1.0;

	SN::TickTime Map(SN::TickTime const& inTime) const { return mStart + inTime * mScale; }
	// The line of what counts from that time on.
	OutermostTime From(SN::TickTime const& inTime) const { return {mIsKnown, Map(inTime), mScale}; }
	// The line of the content of an item, this being that of the item: at the item's start it is at inFirst, and it runs at
	// a speed, in reverse below 0.
	OutermostTime Into(SN::TickTime const& inFirst, double inSpeed) const
	{
		double const scale = inSpeed == 0.0 ? 0.0 : mScale / inSpeed;
		return {mIsKnown && inSpeed != 0.0, mStart - inFirst * scale, scale};
	}
};

} // namespace SonaroHost::Sequence
