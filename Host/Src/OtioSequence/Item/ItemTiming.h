#pragma once

#include "OtioSequence/Scope.h"
#include "OtioSequence/Survey/Ranges.h"

#include <cstdint>
#include <memory>

namespace SonaroHost::Otio
{

// Where an item stands in a sequence.
struct Placement
{
	// Its ends as exact times, and as frames of the sequence's grid.
	Ratio mStart;
	Ratio mEnd;
	std::int64_t mFirstFrame = 0;
	std::int64_t mEndFrame = 0;
	// Frames by which crossfades reach beyond its ends.
	std::int64_t mFramesBefore = 0;
	std::int64_t mFramesAfter = 0;
};

Placement MakePlacement(Ratio const& inStart, Ratio const& inLength, Grid const& inGrid);

// How the item's own time passes in that of the sequence.
struct ItemTiming
{
	ExactRange mRange;
	// Where there is a curve, that of its first key that moves.
	Ratio mSpeed = Ratio(1);
	// All of it is played in reverse: the sample before the content's start is heard first, and all others are one
	// sample earlier, too.
	bool mIsBackwards = false;
	// Where the speed changes: all of it, from the item's exact start on.
	std::shared_ptr<SpeedCurve const> mCurve;
	// The item's time that is heard at its exact start.
	Ratio mContentStart;
	// Maps the sequence's time to the item's.
	TimeMap mToContent;
	// The frames that the item is asked for, crossfades among them, in the sequence's time, and in its own.
	TimeSpan mReach;
	TimeSpan mReachInContent;
	// The item's time at its first frame.
	Ratio mFirst;
};

// inPlacement: with its crossfades.
ItemTiming MakeTiming(
	ItemView const& inItem, Placement const& inPlacement, Ranges& ioRanges, Grid const& inGrid);

} // namespace SonaroHost::Otio
