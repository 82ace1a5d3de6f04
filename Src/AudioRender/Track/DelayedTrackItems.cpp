#include "AudioRender/Track/DelayedTrackItems.h"

#include <algorithm>

// Forward, a playback that begins at s, an item I of latency d that begins at t, and w = t - d:
//
//	time ->     s        w              t
//	            |        |-- filling -->|==== I ====
//
//	s >= w                      it is too late to begin on the direction: fill now
//	an item J between the playhead and I begins at or before w
//	                            filling falls within J or later: fill on the direction
//	an item J between that begins after w has a latency of its own
//	                            both would be filled at once: fill now
//	neither                     it is not filled ahead
//
// In reverse the same holds with the time line turned round: t is the item's end, w = t + d, and items are
// passed from their ends to their starts.
namespace SN
{

namespace
{

constexpr TickTime kOneTick = TickTime::FromTicks(1);

// One direction's view of items: times along the direction, which grow as playback goes on.
class PlayDirection
{
public:
	explicit PlayDirection(bool inReverse)
		: mReverse(inReverse)
	{
	}

	// Sequence time as time along the direction.
	TickTime Along(TickTime const& inTime) const { return mReverse ? -inTime : inTime; }
	// Where playing an item begins.
	TickTime GetBegin(TrackItem const& inItem) const
	{
		return Along(mReverse ? inItem.mItem->GetEndTime() : inItem.mItem->GetTrackItemStartTime());
	}
	TickTime GetFillBegin(TrackItem const& inItem) const
	{
		return GetBegin(inItem) - inItem.mGenerator->GetDelay();
	}

	// The item that is played first; the list's end if there is none.
	std::size_t FindCurrent(DelayedTrackItems::Items const& inItems, TickTime const& inStart) const
	{
		auto const found = std::find_if(inItems.begin(), inItems.end(),
			[&](TrackItem const& inItem)
			{
				TickTime const end = inItem.mItem->GetEndTime();
				return mReverse ? end >= inStart : end > inStart;
			});
		return static_cast<std::size_t>(found - inItems.begin());
	}

private:
	bool mReverse;
};

enum class Filling
{
	kNever,
	kNow,
	kOnTheWay,
};

// inAhead is an item that playback reaches after inCurrent.
Filling ClassifyAhead(DelayedTrackItems::Items const& inItems, std::size_t inAhead, std::size_t inCurrent,
	PlayDirection const& inDirection, TickTime const& inStart)
{
	TrackItem const& item = inItems[inAhead];
	if (item.mGenerator->GetDelay() <= kTimeZero)
	{
		return Filling::kNever;
	}
	TickTime const fillBegin = inDirection.GetFillBegin(item);
	if (inDirection.Along(inStart) >= fillBegin)
	{
		return Filling::kNow;
	}
	for (std::size_t between = inAhead; between != inCurrent;)
	{
		between = between > inCurrent ? between - 1 : between + 1;
		if (inDirection.GetBegin(inItems[between]) <= fillBegin)
		{
			return Filling::kOnTheWay;
		}
		if (inItems[between].mGenerator->GetDelay() >= kOneTick)
		{
			return Filling::kNow;
		}
	}
	return Filling::kNever;
}

Filling ClassifyCurrent(TrackItem const& inItem, PlayDirection const& inDirection, TrackStart const& inStart)
{
	TickTime const delay = inItem.mGenerator->GetDelay();
	if (delay < kOneTick)
	{
		return Filling::kNever;
	}
	TickTime const played = inDirection.Along(inStart.mTime) - inDirection.GetBegin(inItem);
	bool const isWithinDelay = played > kTimeZero && played < delay;
	return inStart.mNestingDepth == 0 || isWithinDelay ? Filling::kNow : Filling::kOnTheWay;
}

} // namespace

void DelayedTrackItems::Clear()
{
	mItems.clear();
	mNext.store(0, std::memory_order_relaxed);
}

DelayedTrackItems::Items DelayedTrackItems::Classify(Items const& inItems, TrackStart const& inStart)
{
	Clear();
	Items fillNow;
	PlayDirection const direction(inStart.mReverse);
	std::size_t const current = direction.FindCurrent(inItems, inStart.mTime);
	if (current == inItems.size())
	{
		return fillNow;
	}
	auto const enter = [&](std::size_t inIndex, Filling inFilling)
	{
		if (inFilling != Filling::kNever)
		{
			(inFilling == Filling::kNow ? fillNow : mItems).push_back(inItems[inIndex]);
		}
	};
	std::size_t const first = inStart.mReverse ? 0 : current + 1;
	std::size_t const end = inStart.mReverse ? current : inItems.size();
	for (std::size_t index = first; index < end; ++index)
	{
		enter(index, ClassifyAhead(inItems, index, current, direction, inStart.mTime));
	}
	enter(current, ClassifyCurrent(inItems[current], direction, inStart));
	std::stable_sort(mItems.begin(), mItems.end(),
		[&direction](TrackItem const& inA, TrackItem const& inB)
		{ return direction.GetFillBegin(inA) < direction.GetFillBegin(inB); });
	return fillNow;
}

TickTime DelayedTrackItems::GetInitialDelay(TrackStart const& inStart) const
{
	TickTime longest;
	for (TrackItem const& entry : mItems)
	{
		TickTime const delay = entry.mGenerator->GetDelay();
		TickTime const begin = entry.mItem->GetTrackItemStartTime();
		TickTime const end = entry.mItem->GetEndTime();
		TickTime left = delay;
		if (inStart.mReverse)
		{
			left = begin >= inStart.mTime ? kTimeZero
				   : end < inStart.mTime  ? delay - (inStart.mTime - end)
										  : delay;
		}
		else
		{
			left = begin < kTimeZero || inStart.mTime >= end ? kTimeZero
				   : inStart.mTime < begin                   ? delay - (begin - inStart.mTime)
															 : delay;
		}
		longest = std::max(longest, left);
	}
	return longest;
}

void DelayedTrackItems::FillInitialDelay(
	TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse, bool inForceCompletion)
{
	std::size_t next = mNext.load(std::memory_order_relaxed);
	auto const isPassed = [&](TrackItem const& inEntry)
	{
		return inReverse ? inStartTime < inEntry.mItem->GetTrackItemStartTime()
						 : inEntry.mItem->GetEndTime() < inStartTime;
	};
	while (next < mItems.size() && isPassed(mItems[next]))
	{
		++next;
	}
	mNext.store(next, std::memory_order_relaxed);

	PlayDirection const direction(inReverse);
	for (; next < mItems.size(); ++next)
	{
		TrackItem const& entry = mItems[next];
		TickTime const delay = entry.mGenerator->GetDelay();
		TickTime const elapsed = direction.Along(inStartTime) - direction.GetBegin(entry);
		TickTime const target = GetFillTarget(entry, inReverse);
		if (inForceCompletion)
		{
			if (delay < -elapsed)
			{
				return;
			}
			entry.mGenerator->FillInitialDelay(target, kTimeZero, inReverse, true);
			continue;
		}
		// What could be filled up to the end of this request.
		TickTime const fill = inDelayTime + delay + elapsed;
		if (fill < kOneTick)
		{
			return;
		}
		entry.mGenerator->FillInitialDelay(target, std::min(fill, inDelayTime), inReverse, false);
	}
}

void DelayedTrackItems::AccumulatePrefetchRequests(
	PrefetchRange const& inRange, PrefetchType inType, PrefetchRequestAccumulator& inAccumulator) const
{
	for (std::size_t next = mNext.load(std::memory_order_relaxed); next < mItems.size(); ++next)
	{
		TrackItem const& entry = mItems[next];
		TickTime const start = entry.mItem->GetStartTime();
		TickTime const fillBegin = start - entry.mGenerator->GetDelay();
		if (fillBegin >= inRange.mEnd)
		{
			return;
		}
		PrefetchRange const part(std::min(std::max(fillBegin, inRange.mStart), inRange.mEnd),
			std::min(std::max(start, inRange.mStart), inRange.mEnd));
		if (!part.IsEmpty())
		{
			entry.mGenerator->AccumulatePrefetchRequests(
				part - entry.mItem->GetTrackItemStartTime(), inType, inAccumulator);
		}
	}
}

TickTime DelayedTrackItems::GetFillTarget(TrackItem const& inItem, bool inReverse)
{
	return inReverse ? inItem.mItem->GetEndTime() : kTimeZero;
}

} // namespace SN
