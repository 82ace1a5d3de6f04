#include "ItemTiming.h"

#include <algorithm>

namespace SonaroHost::Otio
{

Placement MakePlacement(Ratio const& inStart, Ratio const& inLength, Grid const& inGrid)
{
	Ratio const end = inStart + inLength;
	return {inStart, end, inGrid.ToFrame(inStart), inGrid.ToFrame(end), 0, 0};
}

ItemTiming MakeTiming(
	ItemView const& inItem, Placement const& inPlacement, Ranges& ioRanges, Grid const& inGrid)
{
	ItemTiming timing;
	timing.mRange = ioRanges.GetRange(inItem);
	Speed const speed = GetSpeed(*inItem.mItem);
	timing.mSpeed = speed.mIsFrozen ? Ratio(1) : speed.mFactor;
	timing.mCurve = speed.mIsFrozen ? nullptr : speed.mCurve;
	// Whatever the direction, nothing before the range's start is heard: what begins backwards begins later in it.
	Ratio passed = std::max(-timing.mSpeed, Ratio()) * timing.mRange.mLength;
	if (timing.mCurve)
	{
		auto const& keys = timing.mCurve->GetKeys();
		timing.mSpeed =
			std::ranges::find_if(keys, [](auto const& inKey) { return inKey.mSpeed != Ratio(); })->mSpeed;
		timing.mIsBackwards = timing.mCurve->GetSpeeds(Ratio(), timing.mRange.mLength).mLast <= Ratio();
		passed = -timing.mCurve->GetPositions(Ratio(), timing.mRange.mLength).mFirst;
		timing.mToContent =
			TimeMap(inPlacement.mStart, std::make_shared<ContentCurve const>(*timing.mCurve,
											timing.mRange.mLength, timing.mRange.mStart + passed));
	}
	else
	{
		timing.mIsBackwards = timing.mSpeed < Ratio();
		timing.mToContent = TimeMap(inPlacement.mStart, timing.mRange.mStart + passed, timing.mSpeed);
	}
	timing.mReach = {inGrid.ToTime(inPlacement.mFirstFrame - inPlacement.mFramesBefore),
		inGrid.ToTime(inPlacement.mEndFrame + inPlacement.mFramesAfter)};
	timing.mReachInContent = timing.mToContent.Map(timing.mReach);
	timing.mContentStart = timing.mRange.mStart + passed;
	timing.mFirst = timing.mToContent.Map(inGrid.ToTime(inPlacement.mFirstFrame));
	return timing;
}

} // namespace SonaroHost::Otio
