#include "TrackMaker.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace SonaroHost::Otio
{

void TrackMaker::Make(Sequence::Track& ioTrack)
{
	ListSlots();
	std::vector<std::optional<Sequence::Item>> items;
	items.reserve(mSlots.size());
	for (Slot const& slot : mSlots)
	{
		items.push_back(slot.IsMaterial() ? ItemMaker(mContext, mScope, ioTrack.mLayout)
												.Make(slot.mView, slot.mPlacement, ItemMaker::LevelsOn::kItem)
										  : std::nullopt);
	}
	ioTrack.mItems.reserve(mSlots.size());
	for (std::size_t index = 0; index < mSlots.size(); ++index)
	{
		// One that is silent is there all the same where the other one of a crossfade is heard.
		bool const leads = mSlots[index].mCrossfade && items[index + 1];
		bool const follows = index > 0 && mSlots[index - 1].mCrossfade && items[index - 1];
		if (!items[index] && (leads || follows))
		{
			Slot const& slot = mSlots[index];
			AddItem(index,
				ItemMaker(mContext, mScope, ioTrack.mLayout).MakeSilence(slot.mView, slot.mPlacement),
				ioTrack);
			continue;
		}
		AddItem(index, std::move(items[index]), ioTrack);
	}
}

void TrackMaker::ListSlots()
{
	struct Joint
	{
		Transition const* mTransition;
		std::size_t mRight;
	};
	std::vector<Joint> joints;
	Ratio time;
	mSlots.reserve(mTrack.mChildren.size());
	for (Composable const& child : mTrack.mChildren)
	{
		if (Transition const* const transition = child.As<Transition>())
		{
			joints.push_back({transition, mSlots.size()});
			continue;
		}
		Slot& slot = mSlots.emplace_back(child);
		Ratio const length = mContext.mRanges.GetRange(child).mLength;
		slot.mPlacement = MakePlacement(time, length, mScope.mGrid);
		time = time + length;
	}
	for (Joint const& joint : joints)
	{
		if (joint.mTransition->mIsEnabled)
		{
			PlaceTransition(*joint.mTransition, joint.mRight > 0 ? &mSlots[joint.mRight - 1] : nullptr,
				joint.mRight < mSlots.size() ? &mSlots[joint.mRight] : nullptr);
		}
	}
}

void TrackMaker::PlaceTransition(Transition const& inTransition, Slot* ioLeft, Slot* ioRight)
{
	bool const hasLeft = ioLeft && ioLeft->IsMaterial();
	bool const hasRight = ioRight && ioRight->IsMaterial();
	if (hasLeft && hasRight)
	{
		PlaceCrossfade(inTransition, *ioLeft, *ioRight);
	}
	else if (hasRight)
	{
		PlaceFade(inTransition, true, *ioRight);
	}
	else if (hasLeft)
	{
		PlaceFade(inTransition, false, *ioLeft);
	}
}

void TrackMaker::PlaceCrossfade(Transition const& inTransition, Slot& ioLeft, Slot& ioRight)
{
	std::int64_t const cut = ioRight.mPlacement.mFirstFrame;
	Ratio const time = ioRight.mPlacement.mStart;
	std::int64_t const wantedBefore = cut - mScope.mGrid.ToFrame(time - ToSeconds(inTransition.mInOffset));
	std::int64_t const wantedAfter = mScope.mGrid.ToFrame(time + ToSeconds(inTransition.mOutOffset)) - cut;
	std::int64_t const before = std::min(wantedBefore, ioLeft.GetLength() - ioLeft.mEnds.mStart.mTaken);
	std::int64_t const after = std::min(wantedAfter, ioRight.GetLength());
	if (before < wantedBefore || after < wantedAfter)
	{
		mContext.Tell(Note::Kind::kGuess, inTransition.mPlace,
			"the transition is longer than one of its neighbours or overlaps another transition; shortened");
	}
	if (before + after == 0 || ioLeft.GetLength() == 0 || ioRight.GetLength() == 0)
	{
		return;
	}
	ioLeft.mCrossfade = &inTransition;
	ioLeft.mEnds.mEnd.mHasCrossfade = true;
	ioRight.mEnds.mStart.mHasCrossfade = true;
	ioLeft.mEnds.mEnd.mTaken = before;
	ioLeft.mPlacement.mFramesAfter = after;
	ioRight.mEnds.mStart.mTaken = after;
	ioRight.mPlacement.mFramesBefore = before;
}

void TrackMaker::PlaceFade(Transition const& inTransition, bool inIsAtStart, Slot& ioSlot)
{
	auto const& [inside, outside] = inIsAtStart ? std::tie(inTransition.mOutOffset, inTransition.mInOffset)
												: std::tie(inTransition.mInOffset, inTransition.mOutOffset);
	ItemEnd& end = inIsAtStart ? ioSlot.mEnds.mStart : ioSlot.mEnds.mEnd;
	end.mFade = CountFrames(ToSeconds(inside), inIsAtStart, ioSlot.mPlacement, mScope.mGrid);
	end.mShape = GetShape(inTransition);
	if (outside.mValue > 0.0)
	{
		mContext.Tell(Note::Kind::kGuess, inTransition.mPlace,
			inIsAtStart ? "the transition has nothing to fade from; the part before the cut is silent"
						: "the transition has nothing to fade to; the part after the cut is silent");
	}
}

void TrackMaker::AddItem(std::size_t inIndex, std::optional<Sequence::Item> inItem, Sequence::Track& ioTrack)
{
	Slot const& slot = mSlots[inIndex];
	Transition const* const crossfade = inIndex > 0 ? mSlots[inIndex - 1].mCrossfade : nullptr;
	if (inItem && crossfade && mHasItemBefore)
	{
		FadeShape const shape = GetShape(*crossfade);
		ioTrack.mCrossfades.push_back(
			{ioTrack.mItems.size() - 1, mScope.mGrid.ToTicks(slot.mPlacement.mFramesBefore),
				mScope.mGrid.ToTicks(slot.mEnds.mStart.mTaken), shape, shape});
	}
	mHasItemBefore = inItem.has_value();
	if (inItem)
	{
		PlaceFades(mContext, *slot.mView.mItem, slot.mPlacement, mScope.mGrid, slot.mEnds, *inItem);
		ioTrack.mItems.push_back(std::move(*inItem));
	}
}

FadeShape TrackMaker::GetShape(Transition const& inTransition) const
{
	return inTransition.GetSettings().mShape.value_or(mContext.mOptions.mFadeShape);
}

std::shared_ptr<Sequence::Description const> MakeTrackSequence(MakerContext& ioContext, Track const& inTrack,
	Scope const& inScope, SN::AudioChannelLayout const& inLayout)
{
	auto description = std::make_shared<Sequence::Description>();
	description->mName = inTrack.mName;
	description->mLayout = inLayout;
	Sequence::Track track;
	track.mName = inTrack.mName;
	track.mLayout = inLayout;
	TrackMaker(ioContext, inTrack, inScope).Make(track);
	if (!track.mItems.empty())
	{
		description->mTracks.push_back(std::move(track));
	}
	return description;
}

} // namespace SonaroHost::Otio
