#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace SonaroHost::Playback
{

// Which place of a programme each frame of a ring has, for a while after it was written.
//
// Slots    A slot is written over when so many changes have come after it; an odd stamp says that it is being written.
//          A reader takes the fields between two loads of the same even stamp. Fields are stored with release and loaded
//          with acquire, so that neither goes beyond its stamp.
//
// Step  Who     What                                             Order
// H1    writer  stores an odd stamp                              relaxed
// H2    writer  stores the fields                                release
// H3    writer  stores the even stamp                            release
// H4    writer  counts the change                                release
// F1    reader  loads the count                                  acquire
// F2    reader  loads the stamp of a change                      acquire
// F3    reader  loads the fields                                 acquire
// F4    reader  loads the stamp again, which must be the same    relaxed
//
// Where even the change that F1 has counted last is written over, as after a reader has slept, it begins again with F1.
// A field that H2 has stored meanwhile shows F4 the stamp of H1.
//
// Threads  Note: one, which waits for nobody. Find: any; it begins again only when all slots were written meanwhile.
class PlaceHistory
{
public:
	// From a frame of the ring on: the place, and how far it moves with each frame. It is after all those before, except
	// those that were taken back.
	void Note(std::int64_t inFrame, double inPlace, double inSpeed);
	// The place of a frame; of one that was forgotten or never noted, the earliest one that is known, or 0.
	double Find(std::int64_t inFrame) const;

private:
	struct Change
	{
		std::int64_t mFrame = 0;
		double mPlace = 0.0;
		double mSpeed = 0.0;
	};
	struct Slot
	{
		std::atomic<std::uint64_t> mStamp{0};
		std::atomic<std::int64_t> mFrame{0};
		std::atomic<double> mPlace{0.0};
		std::atomic<double> mSpeed{0.0};
	};
	static constexpr std::size_t kSlots = 1024;

	// False when that change is written over.
	bool Read(std::uint64_t inIndex, Change& outChange) const;

	std::array<Slot, kSlots> mSlots;
	std::atomic<std::uint64_t> mCount{0};
};

} // namespace SonaroHost::Playback
