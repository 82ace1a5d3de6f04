#include "ItemFades.h"

#include <algorithm>
#include <optional>

namespace SonaroHost::Otio
{

namespace
{

bool IsFade(std::optional<Fade> const& inFade)
{
	return inFade && inFade->mDuration.mValue > 0.0;
}

// Whether a fade of the settings has its end for itself.
bool IsFree(SequenceMaking& ioMaking, Item const& inItem, bool inHasCrossfade, std::int64_t inFade)
{
	if (inHasCrossfade || inFade > 0)
	{
		ioMaking.Tell(Note::Kind::eIgnored, inItem.mPlace,
			"a fade stands at an end that a transition reaches; the transition counts");
		return false;
	}
	return true;
}

} // namespace

bool HasFades(Item const& inItem)
{
	MixSettings const& settings = inItem.GetSettings();
	return IsFade(settings.mFadeIn) || IsFade(settings.mFadeOut);
}

void PlaceFades(SequenceMaking& ioMaking, Item const& inItem, Placement const& inPlacement,
	Grid const& inGrid, ItemEnds inEnds, Sequence::Item& ioItem)
{
	MixSettings const& settings = inItem.GetSettings();
	FadeShape const shape = ioMaking.mOptions.mFadeShape;
	if (IsFade(settings.mFadeIn) && IsFree(ioMaking, inItem, inEnds.mHasCrossfadeBefore, inEnds.mFadeIn))
	{
		Ratio const end = inPlacement.mStart + ToSeconds(settings.mFadeIn->mDuration);
		inEnds.mFadeIn = inGrid.ToFrame(end) - inPlacement.mFirstFrame;
		inEnds.mFadeInShape = settings.mFadeIn->mShape.value_or(shape);
	}
	if (IsFade(settings.mFadeOut) && IsFree(ioMaking, inItem, inEnds.mHasCrossfadeAfter, inEnds.mFadeOut))
	{
		Ratio const start = inPlacement.mEnd - ToSeconds(settings.mFadeOut->mDuration);
		inEnds.mFadeOut = inPlacement.mEndFrame - inGrid.ToFrame(start);
		inEnds.mFadeOutShape = settings.mFadeOut->mShape.value_or(shape);
	}
	std::int64_t const room = std::max<std::int64_t>(
		inPlacement.mEndFrame - inPlacement.mFirstFrame - inEnds.mTakenBefore - inEnds.mTakenAfter, 0);
	std::int64_t const fadeIn = std::clamp<std::int64_t>(inEnds.mFadeIn, 0, room);
	std::int64_t const fadeOut = std::clamp<std::int64_t>(inEnds.mFadeOut, 0, room - fadeIn);
	if (fadeIn < inEnds.mFadeIn || fadeOut < inEnds.mFadeOut)
	{
		ioMaking.Tell(Note::Kind::eGuess, inItem.mPlace,
			"fades and transitions are longer than what they stand on; a fade is made shorter");
	}
	ioItem.mFadeIn = {inGrid.ToTicks(fadeIn), inEnds.mFadeInShape};
	ioItem.mFadeOut = {inGrid.ToTicks(fadeOut), inEnds.mFadeOutShape};
}

} // namespace SonaroHost::Otio
