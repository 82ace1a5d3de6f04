#pragma once

#include "Sonaro/PrefetchRange.h"
#include "Sonaro/Types.h"

namespace SN
{

// How a time on a clip's time line becomes a time of its media: scaled by the ratio of the rates, and then moved.
class ContentTime
{
public:
	ContentTime() = default;
	// inMediaFrameRate and inFrameRate: those of the media and of the graph; an invalid one counts as 0 samples a
	// second. inHasOffset: whether inOffset is added.
	ContentTime(FrameRate const& inFrameRate, FrameRate const& inMediaFrameRate, bool inHasOffset,
		TickTime const& inOffset);

	TickTime Map(TickTime const& inTime) const SONARO_NONBLOCKING
	{
		TickTime const scaled = mScale == 1.0 ? inTime : inTime * mScale;
		return mHasOffset ? scaled + mOffset : scaled;
	}
	PrefetchRange Map(PrefetchRange const& inRange) const { return {Map(inRange.mStart), Map(inRange.mEnd)}; }

	bool HasOffset() const { return mHasOffset; }
	TickTime const& GetOffset() const { return mOffset; }

private:
	double mScale = 1.0;
	bool mHasOffset = false;
	TickTime mOffset;
};

} // namespace SN
