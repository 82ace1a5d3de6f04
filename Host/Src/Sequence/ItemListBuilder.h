#pragma once

#include "GraphTools.h"
#include "ItemBuilder.h"
#include "Place.h"
#include "Sonaro/AudioTrackRenderableItems.h"
#include "SonaroHost/Sequence/SequenceGraph.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace SonaroHost::Sequence
{

struct BuiltItemList
{
	// Without gaps, far beyond both ends.
	SN::AudioTrackRenderableItemList mItems;
	// The most that one of them needs.
	std::int64_t mSettlingFrames = 0;
	// Whether clones of the engine's would give the same.
	bool mIsClonable = true;
};

// Where the items of a track stand.
struct ItemListSite
{
	// The track.
	Place mPlace;
	Mixdown const& mMixdown;
	std::function<BuiltNest(Nest const&, Place const&)> const& mBuildNest;
	// Of the report.
	std::size_t mTrack = 0;
	std::vector<ItemReport>& mReport;
};

// The list of items that the engine plays as one track: the bodies of the items, the crossfades and fades
// between them, and silence everywhere else.
//
// An item and the transitions at its ends read the same renderer, so that effects, resampler and automation
// run on from one to the other.
class ItemListBuilder
{
public:
	// All outlive this object.
	ItemListBuilder(GraphTools& ioTools, Track const& inTrack, ItemListSite const& inSite);

	// Once.
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
		// As mWhole, but for what is under crossfades beyond.
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
	[[noreturn]] void RefuseItem(
		Item const& inItem, std::string const& inReason, std::string const& inRemedy = {}) const;

	void AddItem(Item const& inItem, Placed const& inPlaced);
	void AddTransition(Stretch const& inStretch, SN::InterfaceRef<SN::IAudioTransition> const& inTransition,
		Generator const& inOutgoing, Generator const& inIncoming);
	void AddFade(Stretch const& inStretch, FadeShape inShape, Generator const& inItem, bool inIsFadeIn);
	// Behind silence, if there is a gap.
	void Append(SN::InterfaceRef<SN::IAudioTrackRenderableItem> const& inItem, Stretch const& inStretch);
	void AppendSilence(std::int64_t inEnd);
	static SN::TickTime GetTrackItemStart(Generator const& inItem);

	GraphTools& mTools;
	Track const& mTrack;
	ItemListSite const& mSite;
	std::vector<Placed> mPlaced;
	BuiltItemList mBuilt;
	// Where the list ends by now.
	std::int64_t mEnd;
	// The item that was added last.
	Generator mLastItem;
};

} // namespace SonaroHost::Sequence
