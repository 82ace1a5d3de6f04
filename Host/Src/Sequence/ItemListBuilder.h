#pragma once

#include "ItemBuilder.h"
#include "Sequence/Node/FadeItem.h"
#include "Sequence/Node/GraphTools.h"
#include "Sequence/Node/Place.h"
#include "Sonaro/AudioTrackRenderableItems.h"
#include "SonaroHost/Sequence/GraphReport.h"
#include "SonaroHost/Sequence/GraphView.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace SonaroHost::Sequence
{

struct BuiltItemList
{
	// The items without gaps, far beyond both ends.
	SN::AudioTrackRenderableItemList mItems;
};

// Where the items of a track stand.
struct ItemListContext
{
	// The track.
	Place mPlace;
	Mixdown const& mMixdown;
	NestMaker const& mBuildNest;
	GraphView const& mView;
	// The sequence's playhead.
	std::shared_ptr<Playhead const> mPlayhead;
	// How often the track has jumped.
	std::shared_ptr<std::uint64_t const> mJumps;
	// The track's index in the report.
	std::size_t mTrack = 0;
	std::vector<ItemReport>& mReport;
};

// The list of items that the engine plays as one track: the bodies of the items, the crossfades and fades
// between them, and silence everywhere else.
//
// An item and the fades at its ends read the same renderer, so that effects, resampler and automation
// run on from one to the other.
class ItemListBuilder
{
public:
	// All outlive this object.
	ItemListBuilder(GraphTools& ioTools, Track const& inTrack, ItemListContext const& inContext);

	// Called once.
	BuiltItemList Build();

private:
	// A stretch of the track, from mFirst on, up to mEnd.
	struct Stretch
	{
		bool IsEmpty() const { return mFirst >= mEnd; }

		std::int64_t mFirst = 0;
		std::int64_t mEnd = 0;
	};

	// An item on it.
	struct Placed
	{
		Stretch mWhole;
		// What is heard of it alone, at full level.
		Stretch mBody;
		// The same as mWhole, but for what is under crossfades beyond.
		Stretch mHeard;
		// The one at its start.
		Crossfade const* mCrossfade = nullptr;
		Stretch mCrossfaded;
		bool mFadesIn = false;
		bool mFadesOut = false;
	};

	Placed PlaceItem(Item const& inItem) const;
	void PlaceCrossfade(Crossfade const& inCrossfade);
	void PlaceFades(Item const& inItem, Placed& ioPlaced, bool inHasCrossfadeBehind) const;
	Place GetPlace(Item const& inItem) const;
	[[noreturn]] void RefuseItem(
		Item const& inItem, std::string const& inReason, std::string const& inRemedy = {}) const;

	void AddItem(Item const& inItem, Placed const& inPlaced);
	void AddFade(
		Stretch const& inStretch, FadeItem::Side const& inOutgoing, FadeItem::Side const& inIncoming);
	FadeItem::Side MakeSide(Generator const& inItem, FadeShape inShape) const;
	// Appends the item, after silence if there is a gap.
	void Append(SN::InterfaceRef<SN::IAudioTrackRenderableItem> const& inItem, Stretch const& inStretch);
	void AppendSilence(std::int64_t inEnd);

	GraphTools& mTools;
	Track const& mTrack;
	ItemListContext const& mContext;
	std::vector<Placed> mPlaced;
	BuiltItemList mBuilt;
	// Where the list ends by now.
	std::int64_t mEnd;
	// The item that was added last.
	Generator mLastItem;
};

} // namespace SonaroHost::Sequence
