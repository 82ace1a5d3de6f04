#include "ItemFades.h"

#include <algorithm>
#include <optional>

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

// Whether a fade of the settings has its end for itself.
bool IsFree(MakerContext& ioContext, Item const& inItem, bool inHasCrossfade, std::int64_t inFade)
{
	if (inHasCrossfade || inFade > 0)
	{
		ioContext.Tell(Note::Kind::kIgnored, inItem.mPlace,
			"a fade and a transition are at the same end of the item; the fade is ignored");
		return false;
	}
	return true;
}

} // namespace

bool HasFades(Item const& inItem)
{
	return FindFadeIn(inItem) || FindFadeOut(inItem);
}

void PlaceFades(MakerContext& ioContext, Item const& inItem, Placement const& inPlacement, Grid const& inGrid,
	ItemEnds inEnds, Sequence::Item& ioItem)
{
	std::optional<Fade> const in = FindFadeIn(inItem);
	std::optional<Fade> const out = FindFadeOut(inItem);
	FadeShape const shape = ioContext.mOptions.mFadeShape;
	if (in && IsFree(ioContext, inItem, inEnds.mHasCrossfadeBefore, inEnds.mFadeIn))
	{
		Ratio const end = inPlacement.mStart + ToSeconds(in->mDuration);
		inEnds.mFadeIn = inGrid.ToFrame(end) - inPlacement.mFirstFrame;
		inEnds.mFadeInShape = in->mShape.value_or(shape);
	}
	if (out && IsFree(ioContext, inItem, inEnds.mHasCrossfadeAfter, inEnds.mFadeOut))
	{
		Ratio const start = inPlacement.mEnd - ToSeconds(out->mDuration);
		inEnds.mFadeOut = inPlacement.mEndFrame - inGrid.ToFrame(start);
		inEnds.mFadeOutShape = out->mShape.value_or(shape);
	}
	std::int64_t const room = std::max<std::int64_t>(
		inPlacement.mEndFrame - inPlacement.mFirstFrame - inEnds.mTakenBefore - inEnds.mTakenAfter, 0);
	std::int64_t const fadeIn = std::clamp<std::int64_t>(inEnds.mFadeIn, 0, room);
	std::int64_t const fadeOut = std::clamp<std::int64_t>(inEnds.mFadeOut, 0, room - fadeIn);
	if (fadeIn < inEnds.mFadeIn || fadeOut < inEnds.mFadeOut)
	{
		ioContext.Tell(Note::Kind::kGuess, inItem.mPlace,
			"fades and transitions together are longer than the item; a fade is shortened");
	}
	ioItem.mFadeIn = {inGrid.ToTicks(fadeIn), inEnds.mFadeInShape};
	ioItem.mFadeOut = {inGrid.ToTicks(fadeOut), inEnds.mFadeOutShape};
}

} // namespace SonaroHost::Otio
