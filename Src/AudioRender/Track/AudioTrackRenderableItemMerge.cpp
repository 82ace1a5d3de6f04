#include "Sonaro/AudioTrackRenderableItems.h"
#include "Sonaro/IAudioGenerator.h"

#include <algorithm>
#include <utility>

namespace SN
{

namespace
{

using Item = InterfaceRef<IAudioTrackRenderableItem>;

// A target list while source items are laid over it, one pass from front to back.
//
// The list is kept as two halves at the running index: mDone in front of it, and mRest from it on with
// its first item at the end, so that taking from the front of what is left costs nothing. Each item
// moves from one to the other once; the whole merge costs in proportion to the lengths of the lists.
// Whatever happens on the way, the target is put together again at the end.
class MergedList
{
public:
	MergedList(AudioTrackRenderableItemList& ioTarget, std::size_t inSourceCount)
		: mTarget(ioTarget)
	{
		// A source item brings itself and at most one clone, and putting together may not fail.
		mDone.reserve(ioTarget.size() + 2 * inSourceCount);
		mRest.reserve(ioTarget.size() + 2 * inSourceCount);
		mRest.assign(std::make_move_iterator(ioTarget.rbegin()), std::make_move_iterator(ioTarget.rend()));
	}
	~MergedList()
	{
		AdvanceTo(mRest.size());
		mTarget.swap(mDone);
	}
	MergedList(MergedList const&) = delete;
	MergedList& operator=(MergedList const&) = delete;

	// Lays inSource over the list, or drops it if it lies after all that is left.
	void Overlay(Item const& inSource, FrameRate const& inFrameRate)
	{
		TickTime const start = inSource->GetStartTime();
		TickTime const end = inSource->GetEndTime();
		std::size_t first = FindFrom(0, [&](Item const& inItem) { return inItem->GetEndTime() > start; });
		if (first == mRest.size())
		{
			return;
		}
		std::size_t last = FindFrom(first, [&](Item const& inItem) { return inItem->GetStartTime() >= end; });
		Item clone;
		// Where nothing lies between the two, the source fits in a gap.
		if (first != last)
		{
			CutAround(start, end, inFrameRate, first, last, clone);
		}
		AdvanceTo(first);
		mRest.resize(mRest.size() - (last - first));
		if (clone)
		{
			mRest.push_back(std::move(clone));
		}
		mRest.push_back(inSource);
	}

private:
	// Cuts the items at both ends of the range from first up to last, and takes those that stay in the
	// list out of the range. An item cut in its middle stays as its head; outClone is its tail.
	void CutAround(TickTime const& inStart, TickTime const& inEnd, FrameRate const& inFrameRate,
		std::size_t& ioFirst, std::size_t& ioLast, Item& outClone)
	{
		Item const head = At(ioFirst);
		Item const beforeLast = At(ioLast - 1);
		bool const cutsHead = head->GetStartTime() < inStart;
		bool const cutsTail = inEnd < beforeLast->GetEndTime();
		if (cutsHead && cutsTail && head == beforeLast)
		{
			outClone = InterfaceRef<IAudioGenerator>(head)->Clone();
		}
		if (cutsHead)
		{
			head->Init(head->GetStartTime(), inStart, head->GetTrackItemStartTime(), inFrameRate);
			++ioFirst;
		}
		if (cutsTail)
		{
			Item const& tail = outClone ? outClone : beforeLast;
			tail->Init(inEnd, tail->GetEndTime(), tail->GetTrackItemStartTime(), inFrameRate);
			if (!outClone)
			{
				ioLast = std::max(ioLast - 1, ioFirst);
			}
		}
	}

	// The item at an index counted from the running index on.
	Item const& At(std::size_t inIndex) const { return mRest[mRest.size() - 1 - inIndex]; }

	// Finds the first index from inFirst on at which inPredicate holds, by binary search; the count of what is left
	// if it does nowhere.
	template <class Predicate>
	std::size_t FindFrom(std::size_t inFirst, Predicate const& inPredicate) const
	{
		auto const found = std::partition_point(mRest.rbegin() + static_cast<std::ptrdiff_t>(inFirst),
			mRest.rend(), [&](Item const& inItem) { return !inPredicate(inItem); });
		return static_cast<std::size_t>(found - mRest.rbegin());
	}

	// Moves the running index forward by inCount items.
	void AdvanceTo(std::size_t inCount)
	{
		for (; inCount > 0; --inCount)
		{
			mDone.push_back(std::move(mRest.back()));
			mRest.pop_back();
		}
	}

	AudioTrackRenderableItemList& mTarget;
	AudioTrackRenderableItemList mDone;
	AudioTrackRenderableItemList mRest;
};

} // namespace

void MergeAudioTrackRenderableItems(AudioTrackRenderableItemList const& inSourceItems,
	AudioTrackRenderableItemList& ioTargetItems, FrameRate const& inFrameRate)
{
	MergedList merged(ioTargetItems, inSourceItems.size());
	for (Item const& source : inSourceItems)
	{
		merged.Overlay(source, inFrameRate);
	}
}

} // namespace SN
