#include "ItemFades.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace SonaroHost::Otio
{

namespace
{

// The item's own, otherwise what others left, in its metadata or the first of its effects; nothing for none.
std::optional<Fade> FindFade(Item const& inItem, std::optional<Fade> MixSettings::*inOwn,
	std::optional<Fade> ForeignLevels::*inForeign)
{
	MixSettings const& settings = inItem.GetSettings();
	std::optional<Fade> fade = settings.*inOwn ? settings.*inOwn : settings.mForeign.*inForeign;
	for (Effect const& effect : inItem.mEffects)
	{
		fade = fade || !effect.mIsEnabled ? fade : effect.mLevels.*inForeign;
	}
	return fade && fade->mDuration.mValue > 0.0 ? fade : std::nullopt;
}

std::optional<Fade> FindFadeIn(Item const& inItem)
{
	return FindFade(inItem, &MixSettings::mFadeIn, &ForeignLevels::mFadeIn);
}

std::optional<Fade> FindFadeOut(Item const& inItem)
{
	return FindFade(inItem, &MixSettings::mFadeOut, &ForeignLevels::mFadeOut);
}

} // namespace

bool HasFades(Item const& inItem)
{
	return FindFadeIn(inItem) || FindFadeOut(inItem);
}

std::int64_t CountFrames(
	Ratio const& inFade, bool inIsAtStart, Placement const& inPlacement, Grid const& inGrid)
{
	return inIsAtStart ? inGrid.ToFrame(inPlacement.mStart + inFade) - inPlacement.mFirstFrame
					   : inPlacement.mEndFrame - inGrid.ToFrame(inPlacement.mEnd - inFade);
}

void PlaceFades(MakerContext& ioContext, Item const& inItem, Placement const& inPlacement, Grid const& inGrid,
	ItemEnds inEnds, Sequence::Item& ioItem)
{
	auto const place = [&](std::optional<Fade> const& inFade, bool inIsAtStart, ItemEnd& ioEnd)
	{
		if (inFade && (ioEnd.mHasCrossfade || ioEnd.mFade > 0))
		{
			ioContext.Tell(Note::Kind::kIgnored, inItem.mPlace,
				"a fade and a transition are at the same end of the item; the fade is ignored");
		}
		else if (inFade)
		{
			ioEnd.mFade = CountFrames(ToSeconds(inFade->mDuration), inIsAtStart, inPlacement, inGrid);
			ioEnd.mShape = inFade->mShape.value_or(ioContext.mOptions.mFadeShape);
		}
	};
	place(FindFadeIn(inItem), true, inEnds.mStart);
	place(FindFadeOut(inItem), false, inEnds.mEnd);
	std::int64_t const room = std::max<std::int64_t>(
		inPlacement.mEndFrame - inPlacement.mFirstFrame - inEnds.mStart.mTaken - inEnds.mEnd.mTaken, 0);
	std::int64_t const fadeIn = std::clamp<std::int64_t>(inEnds.mStart.mFade, 0, room);
	std::int64_t const fadeOut = std::clamp<std::int64_t>(inEnds.mEnd.mFade, 0, room - fadeIn);
	if (fadeIn < inEnds.mStart.mFade || fadeOut < inEnds.mEnd.mFade)
	{
		ioContext.Tell(Note::Kind::kGuess, inItem.mPlace,
			"fades and transitions together are longer than the item; a fade is shortened");
	}
	ioItem.mFadeIn = {inGrid.ToTicks(fadeIn), inEnds.mStart.mShape};
	ioItem.mFadeOut = {inGrid.ToTicks(fadeOut), inEnds.mEnd.mShape};
}

void AddOnlyItem(MakerContext& ioContext, ItemView const& inItem, Scope const& inScope,
	ItemMaker::LevelsOn inLevelsOn, Sequence::Track& ioTrack)
{
	Placement const placement =
		MakePlacement(Ratio(), ioContext.mRanges.GetRange(inItem).mLength, inScope.mGrid);
	if (auto item = ItemMaker(ioContext, inScope, ioTrack.mLayout).Make(inItem, placement, inLevelsOn))
	{
		PlaceFades(ioContext, *inItem.mItem, placement, inScope.mGrid, {}, *item);
		ioTrack.mItems.push_back(std::move(*item));
	}
}

} // namespace SonaroHost::Otio
