#pragma once

#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/IAudioTrackRenderableItem.h"
#include "Sonaro/PrefetchRange.h"
#include "Sonaro/Types.h"

#include <atomic>
#include <vector>

namespace SN
{

// An item of a track with the generator that it is.
struct TrackItem
{
	InterfaceRef<IAudioTrackRenderableItem> mItem;
	// Empty for an item that gives no audio: using it raises the null-pointer exception.
	InterfaceRef<IAudioGenerator> mGenerator;
};

// Where a playback of a track begins.
struct TrackStart
{
	TickTime mTime;
	bool mReverse = false;
	unsigned mNestingDepth = 0;
};

// The items of a track that have a latency and lie ahead of the playhead: they are given a head start
// while playback approaches them.
//
// Threads  As for the track: AccumulatePrefetchRequests may come from another thread than FillInitialDelay,
//          but not while Classify or Clear runs.
class DelayedTrackItems
{
public:
	using Items = std::vector<TrackItem>;

	void Clear();

	// Keeps the items that can be filled on the way, in the order in which playback reaches them, and
	// returns those that must be filled at once.
	Items Classify(Items const& inItems, TrackStart const& inStart);

	// What of the latencies of the kept items cannot be hidden by filling on the way.
	TickTime GetInitialDelay(TrackStart const& inStart) const;

	// See IAudioGenerator::FillInitialDelay.
	void FillInitialDelay(
		TickTime const& inStartTime, TickTime const& inDelayTime, bool inReverse, bool inForceCompletion);

	// Asks for what filling will read within the range. Forward only.
	void AccumulatePrefetchRequests(
		PrefetchRange const& inRange, PrefetchType inType, PrefetchRequestAccumulator& inAccumulator) const;

	// The side of an item at which playing it begins, as its FillInitialDelay wants it.
	static TickTime GetFillTarget(TrackItem const& inItem, bool inReverse) SONARO_NONBLOCKING;

private:
	Items mItems;
	// The first item that is not passed yet.
	std::atomic<std::size_t> mNext{0};
};

} // namespace SN
