#pragma once

#include "AudioRender/Track/DelayedTrackItems.h"
#include "Sonaro/PrefetchRange.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace SN
{

// The items of a track and the one that was played last, so that a run of requests costs no search.
//
// Items    Sorted by time. A cursor that has passed the last one stands at the end until it is sent back.
// Threads  One at a time. ForEachWithin may come from another, but not beside SetItems.
class TrackItemCursor
{
public:
	using Items = DelayedTrackItems::Items;

	// Stands at the first item.
	void SetItems(Items inItems)
	{
		mItems = std::move(inItems);
		SetIndex(0);
	}
	Items const& GetItems() const { return mItems; }
	Items::const_iterator begin() const { return mItems.begin(); }
	Items::const_iterator end() const { return mItems.end(); }

	bool IsAtEnd() const { return GetIndex() >= mItems.size(); }
	// A list that was run off is played from its first item on.
	void ReturnFromEnd()
	{
		if (IsAtEnd())
		{
			SetIndex(0);
		}
	}
	// The cursor must not be at the end.
	TrackItem const& GetCurrent() const { return mItems[GetIndex()]; }
	// Moves to the item after the current one; false when there is none.
	bool MoveOn()
	{
		SetIndex(GetIndex() + 1);
		return !IsAtEnd();
	}
	// Moves to the item at a time; in a gap, forward to the item after it and backward to the one before it. False
	// when the time lies outside the list. The cursor must not be at the end.
	bool MoveTo(TickTime const& inTime);

	// Calls inUse(item, part) for each item of a range with its part of it. Neither starts from the end nor moves the
	// cursor.
	template <class Use>
	void ForEachWithin(PrefetchRange const& inRange, Use const& inUse) const
	{
		TickTime start = inRange.mStart;
		for (std::size_t index = FindFirstWithin(inRange); index < mItems.size(); ++index)
		{
			TrackItem const& item = mItems[index];
			TickTime const end = item.mItem->GetEndTime();
			inUse(item, PrefetchRange(start, std::min(end, inRange.mEnd)));
			if (end >= inRange.mEnd)
			{
				return;
			}
			start = end;
		}
	}

private:
	std::size_t GetIndex() const { return mIndex.load(std::memory_order_relaxed); }
	void SetIndex(std::size_t inIndex) { mIndex.store(inIndex, std::memory_order_relaxed); }
	std::size_t FindFirstWithin(PrefetchRange const& inRange) const;
	// The first item from one on that ends after a time.
	std::size_t SkipPassed(std::size_t inIndex, TickTime const& inTime) const;
	// The last item up to one that begins by a time; the first one if there is none.
	std::size_t SkipComing(std::size_t inIndex, TickTime const& inTime) const;

	Items mItems;
	std::atomic<std::size_t> mIndex{0};
};

} // namespace SN
