#include "ItemListBuilder.h"

#include <algorithm>
#include <string>
#include <utility>

namespace SonaroHost::Sequence
{

namespace
{

// The frame up to which lists go in either direction: half of the time line, so that sums of such times stay on it.
std::int64_t GetFarFrame(SN::FrameRate const& inFrameRate)
{
	return SN::kTimeMax.ToFrame64(inFrameRate) / 2;
}

// Of a nested sequence; nobody asks for that of a clip.
OutermostTime FindInnerTime(Item const& inItem, OutermostTime const& inTime)
{
	bool const isClip = std::holds_alternative<Clip>(inItem.mContent);
	OutermostTime time = isClip ? OutermostTime() : inTime.Into(GetSequenceStart(inItem), inItem.mSpeed);
	time.mIsKnown &= !inItem.mSpeedCurve;
	return time;
}

} // namespace

ItemListBuilder::ItemListBuilder(GraphTools& ioTools, Track const& inTrack, ItemListContext const& inContext)
	: mTools(ioTools),
	  mTrack(inTrack),
	  mContext(inContext),
	  mEnd(-GetFarFrame(ioTools.GetFrameRate()))
{
}

BuiltItemList ItemListBuilder::Build()
{
	std::vector<Item> const& items = mTrack.mItems;
	mPlaced.reserve(items.size());
	std::int64_t end = 0;
	for (Item const& item : items)
	{
		mPlaced.push_back(PlaceItem(item));
		if (mPlaced.back().mWhole.mFirst < end)
		{
			RefuseItem(item, "it begins before the end of the item before it, or before the sequence");
		}
		end = mPlaced.back().mWhole.mEnd;
	}
	std::ranges::for_each(
		mTrack.mCrossfades, [this](Crossfade const& inCrossfade) { PlaceCrossfade(inCrossfade); });
	for (std::size_t index = 0; index < items.size(); ++index)
	{
		bool const hasCrossfadeBehind = index + 1 < items.size() && mPlaced[index + 1].mCrossfade;
		PlaceFades(items[index], mPlaced[index], hasCrossfadeBehind);
	}
	AppendSilence(mPlaced.empty() ? 0 : mPlaced.front().mWhole.mFirst);
	for (std::size_t index = 0; index < items.size(); ++index)
	{
		if (!mPlaced[index].mWhole.IsEmpty())
		{
			AddItem(items[index], mPlaced[index]);
		}
	}
	AppendSilence(GetFarFrame(mTools.GetFrameRate()));
	return std::move(mBuilt);
}

ItemListBuilder::Placed ItemListBuilder::PlaceItem(Item const& inItem) const
{
	Placed placed;
	placed.mWhole = {mTools.ToFrames(inItem.mStart), mTools.ToFrames(inItem.mEnd)};
	if (placed.mWhole.mEnd < placed.mWhole.mFirst)
	{
		RefuseItem(inItem, "it ends before it begins");
	}
	if (placed.mWhole.mEnd > GetFarFrame(mTools.GetFrameRate()))
	{
		RefuseItem(inItem, "it ends beyond 50 hours", "shorten it or move it earlier");
	}
	placed.mBody = placed.mWhole;
	placed.mHeard = placed.mWhole;
	return placed;
}

void ItemListBuilder::PlaceCrossfade(Crossfade const& inCrossfade)
{
	std::size_t const index = inCrossfade.mOutgoing;
	if (mPlaced.size() < 2 || index >= mPlaced.size() - 1)
	{
		Refuse(mContext.mPlace, "a crossfade follows item index " + std::to_string(index) + " of " +
									std::to_string(mPlaced.size()) + " items, but there is no next item");
	}
	Placed& outgoing = mPlaced[index];
	Placed& incoming = mPlaced[index + 1];
	if (outgoing.mWhole.mEnd != incoming.mWhole.mFirst)
	{
		RefuseItem(mTrack.mItems[index], "it does not meet the next item, so they cannot be crossfaded");
	}
	std::int64_t const cut = incoming.mWhole.mFirst;
	Stretch const stretch{
		cut - mTools.ToFrames(inCrossfade.mBefore), cut + mTools.ToFrames(inCrossfade.mAfter)};
	bool const isWithin = stretch.mFirst >= outgoing.mBody.mFirst && stretch.mFirst <= cut &&
						  stretch.mEnd <= incoming.mBody.mEnd && stretch.mEnd >= cut;
	if (!isWithin || incoming.mCrossfade || outgoing.mWhole.IsEmpty() || incoming.mWhole.IsEmpty())
	{
		RefuseItem(mTrack.mItems[index],
			"the crossfade at its end extends past an item or into another crossfade", "shorten it");
	}
	if (stretch.IsEmpty())
	{
		return;
	}
	outgoing.mBody.mEnd = stretch.mFirst;
	incoming.mBody.mFirst = stretch.mEnd;
	outgoing.mHeard.mEnd = stretch.mEnd;
	incoming.mHeard.mFirst = stretch.mFirst;
	incoming.mCrossfade = &inCrossfade;
	incoming.mCrossfaded = stretch;
}

void ItemListBuilder::PlaceFades(Item const& inItem, Placed& ioPlaced, bool inHasCrossfadeBehind) const
{
	std::int64_t const fadeIn = mTools.ToFrames(inItem.mFadeIn.mLength);
	std::int64_t const fadeOut = mTools.ToFrames(inItem.mFadeOut.mLength);
	if (ioPlaced.mWhole.IsEmpty() || (fadeIn == 0 && fadeOut == 0))
	{
		return;
	}
	if ((fadeIn != 0 && ioPlaced.mCrossfade) || (fadeOut != 0 && inHasCrossfadeBehind))
	{
		RefuseItem(inItem, "a fade and a crossfade are at the same end of it", "remove one of them");
	}
	if (fadeIn < 0 || fadeOut < 0 || fadeIn > ioPlaced.mBody.mEnd - ioPlaced.mBody.mFirst - fadeOut)
	{
		RefuseItem(inItem, "its fades and crossfades overlap", "shorten them");
	}
	ioPlaced.mFadesIn = fadeIn != 0;
	ioPlaced.mFadesOut = fadeOut != 0;
	ioPlaced.mBody.mFirst += fadeIn;
	ioPlaced.mBody.mEnd -= fadeOut;
}

Place ItemListBuilder::GetPlace(Item const& inItem) const
{
	Place place = mContext.mPlace;
	place.mItemName = &inItem.mName;
	place.mItemNumber = static_cast<std::size_t>(&inItem - mTrack.mItems.data()) + 1;
	place.mOrigin = &inItem.mOrigin;
	return place;
}

void ItemListBuilder::RefuseItem(
	Item const& inItem, std::string const& inReason, std::string const& inRemedy) const
{
	Refuse(GetPlace(inItem), inReason, inRemedy);
}

void ItemListBuilder::AddItem(Item const& inItem, Placed const& inPlaced)
{
	Place place = GetPlace(inItem);
	place.mTime = mContext.mPlace.mTime.From(inItem.mStart);
	place.mInnerTime = FindInnerTime(inItem, place.mTime);
	ItemContext const context{place, mTrack.mLayout, mContext.mMixdown,
		inPlaced.mWhole.mFirst - inPlaced.mHeard.mFirst, mContext.mBuildNest, mContext.mPlayhead,
		mContext.mJumps,
		inItem.mOrigin != mTrack.mOrigin ? mContext.mView.FindTap(inItem.mOrigin)
										 : SN::InterfaceRef<SN::IAudioMeterSetter>()};
	BuiltItem const built = ItemBuilder(mTools, context).Build(inItem);
	mContext.mReport.push_back(
		{mContext.mTrack, inItem.mName, inPlaced.mWhole.mFirst, inPlaced.mWhole.mEnd, built.mLatency});

	// In the order of the kinds of content.
	constexpr NodeLabel::Kind kKinds[] = {
		NodeLabel::Kind::kClip, NodeLabel::Kind::kNest, NodeLabel::Kind::kMulticam};
	mTools.Label(built.mGenerator, {kKinds[inItem.mContent.index()], inItem.mName});
	SN::InterfaceRef<SN::IAudioTrackRenderableItem> const item = built.mGenerator;
	Stretch const& body = inPlaced.mBody;
	item->Init(mTools.ToTime(body.mFirst), mTools.ToTime(body.mEnd), mTools.ToTime(inPlaced.mHeard.mFirst),
		mTools.GetFrameRate());
	if (inPlaced.mCrossfade)
	{
		AddFade(inPlaced.mCrossfaded, MakeSide(mLastItem, inPlaced.mCrossfade->mOutgoingShape),
			MakeSide(built.mGenerator, inPlaced.mCrossfade->mIncomingShape));
	}
	if (inPlaced.mFadesIn)
	{
		AddFade({inPlaced.mWhole.mFirst, body.mFirst}, {}, MakeSide(built.mGenerator, inItem.mFadeIn.mShape));
	}
	if (!body.IsEmpty())
	{
		Append(item, body);
	}
	if (inPlaced.mFadesOut)
	{
		AddFade({body.mEnd, inPlaced.mWhole.mEnd}, MakeSide(built.mGenerator, inItem.mFadeOut.mShape), {});
	}
	mLastItem = built.mGenerator;
}

FadeItem::Side ItemListBuilder::MakeSide(Generator const& inItem, FadeShape inShape) const
{
	SN::InterfaceRef<SN::IAudioTrackRenderableItem> const item = inItem;
	return {inItem, item->GetTrackItemStartTime().ToFrame64(mTools.GetFrameRate()), inShape};
}

void ItemListBuilder::AddFade(
	Stretch const& inStretch, FadeItem::Side const& inOutgoing, FadeItem::Side const& inIncoming)
{
	SN::InterfaceRef<SN::IAudioTrackRenderableItem> const item =
		zorvcore::classref::MakeObject<FadeItem>(FadeItem::Settings{inOutgoing, inIncoming, inStretch.mFirst,
			inStretch.mEnd - inStretch.mFirst, mTrack.mLayout, mTools.GetFrameRate(),
			mTools.GetScratch(GraphTools::ScratchUse::kFade, mTrack.mLayout.size())});
	SN::TickTime const start = mTools.ToTime(inStretch.mFirst);
	item->Init(start, mTools.ToTime(inStretch.mEnd), start, mTools.GetFrameRate());
	Append(item, inStretch);
}

void ItemListBuilder::Append(
	SN::InterfaceRef<SN::IAudioTrackRenderableItem> const& inItem, Stretch const& inStretch)
{
	AppendSilence(inStretch.mFirst);
	mBuilt.mItems.push_back(inItem);
	mEnd = inStretch.mEnd;
}

void ItemListBuilder::AppendSilence(std::int64_t inEnd)
{
	if (mEnd < inEnd)
	{
		mBuilt.mItems.push_back(SN::CreateSilentAudioTrackRenderableItem(
			mTools.ToTime(mEnd), mTools.ToTime(inEnd), mTools.GetFrameRate()));
		mEnd = inEnd;
	}
}

} // namespace SonaroHost::Sequence
