#include "PlaceHistory.h"

namespace SonaroHost::Playback
{

void PlaceHistory::Note(std::int64_t inFrame, double inPlace, double inSpeed)
{
	std::uint64_t const index = mCount.load(std::memory_order_relaxed);
	Slot& slot = mSlots[index % kSlots];
	slot.mStamp.store(2 * index + 1, std::memory_order_relaxed);
	slot.mFrame.store(inFrame, std::memory_order_release);
	slot.mPlace.store(inPlace, std::memory_order_release);
	slot.mSpeed.store(inSpeed, std::memory_order_release);
	slot.mStamp.store(2 * index + 2, std::memory_order_release);
	mCount.store(index + 1, std::memory_order_release);
}

double PlaceHistory::Find(std::int64_t inFrame) const
{
	Change change;
	std::uint64_t count = mCount.load(std::memory_order_acquire);
	while (count > 0 && !Read(count - 1, change))
	{
		count = mCount.load(std::memory_order_acquire);
	}
	for (std::uint64_t index = count; index > 0 && Read(index - 1, change); --index)
	{
		if (change.mFrame <= inFrame)
		{
			return change.mPlace + static_cast<double>(inFrame - change.mFrame) * change.mSpeed;
		}
	}
	return change.mPlace;
}

bool PlaceHistory::Read(std::uint64_t inIndex, Change& outChange) const
{
	Slot const& slot = mSlots[inIndex % kSlots];
	std::uint64_t const stamp = slot.mStamp.load(std::memory_order_acquire);
	Change const change{slot.mFrame.load(std::memory_order_acquire),
		slot.mPlace.load(std::memory_order_acquire), slot.mSpeed.load(std::memory_order_acquire)};
	if (stamp != 2 * inIndex + 2 || stamp != slot.mStamp.load(std::memory_order_relaxed))
	{
		return false;
	}
	outChange = change;
	return true;
}

} // namespace SonaroHost::Playback
