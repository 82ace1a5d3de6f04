#pragma once

#include "OtioSequence/Item/ItemFades.h"
#include "OtioSequence/Item/ItemMaker.h"

#include <memory>
#include <optional>
#include <vector>

namespace SonaroHost::Otio
{

// Makes the items and crossfades of a track of a sequence.
class TrackMaker
{
public:
	// All outlive this object.
	TrackMaker(MakerContext& ioContext, Track const& inTrack, Scope const& inScope)
		: mContext(ioContext),
		  mTrack(inTrack),
		  mScope(inScope)
	{
	}

	// ioTrack: has its layout.
	void Make(Sequence::Track& ioTrack);

private:
	// A child that takes up time.
	struct Slot
	{
		explicit Slot(ItemView const& inView)
			: mView(inView)
		{
		}

		// Whether there can be sound: not a gap.
		bool IsMaterial() const { return mView.mClip || mView.mTrack || mView.mStack; }
		std::int64_t GetLength() const { return mPlacement.mEndFrame - mPlacement.mFirstFrame; }

		ItemView mView;
		Placement mPlacement;
		ItemEnds mEnds;
		// The crossfade to the slot after it.
		Transition const* mCrossfade = nullptr;
	};

	void ListSlots();
	void PlaceTransition(Transition const& inTransition, Slot* ioLeft, Slot* ioRight);
	void PlaceCrossfade(Transition const& inTransition, Slot& ioLeft, Slot& ioRight);
	// A fade from or to silence.
	void PlaceFade(Transition const& inTransition, bool inIsAtStart, Slot& ioSlot);
	void AddItem(std::size_t inIndex, std::optional<Sequence::Item> inItem, Sequence::Track& ioTrack);
	FadeShape GetShape(Transition const& inTransition) const;

	MakerContext& mContext;
	Track const& mTrack;
	Scope const& mScope;
	std::vector<Slot> mSlots;
	// Whether the last slot gave an item.
	bool mHasItemBefore = false;
};

// A sequence with that track alone, without its own levels.
std::shared_ptr<Sequence::Description const> MakeTrackSequence(MakerContext& ioContext, Track const& inTrack,
	Scope const& inScope, SN::AudioChannelLayout const& inLayout);

} // namespace SonaroHost::Otio
