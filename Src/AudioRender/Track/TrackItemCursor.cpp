#include "AudioRender/Track/TrackItemCursor.h"

namespace SN
{

bool TrackItemCursor::MoveTo(TickTime const& inTime)
{
	std::size_t index = GetIndex();
	IAudioTrackRenderableItem& current = *mItems[index].mItem;
	bool const isBefore = inTime < current.GetStartTime();
	if (!isBefore && inTime < current.GetEndTime())
	{
		return true;
	}
	index = isBefore ? SkipComing(index, inTime) : SkipPassed(index, inTime);
	SetIndex(index);
	return isBefore ? inTime >= mItems[index].mItem->GetStartTime() : index < mItems.size();
}

std::size_t TrackItemCursor::FindFirstWithin(PrefetchRange const& inRange) const
{
	std::size_t const index = GetIndex();
	if (index >= mItems.size())
	{
		return index;
	}
	IAudioTrackRenderableItem& current = *mItems[index].mItem;
	TickTime const start = current.GetStartTime();
	TickTime const end = current.GetEndTime();
	if (inRange.mStart >= start && end >= inRange.mEnd)
	{
		return index;
	}
	return inRange.mStart >= end ? SkipPassed(index, inRange.mStart) : SkipComing(index, inRange.mStart);
}

std::size_t TrackItemCursor::SkipPassed(std::size_t inIndex, TickTime const& inTime) const
{
	std::size_t index = inIndex;
	while (index < mItems.size() && inTime >= mItems[index].mItem->GetEndTime())
	{
		++index;
	}
	return index;
}

std::size_t TrackItemCursor::SkipComing(std::size_t inIndex, TickTime const& inTime) const
{
	std::size_t index = inIndex;
	while (index > 0 && inTime < mItems[index].mItem->GetStartTime())
	{
		--index;
	}
	return index;
}

} // namespace SN
