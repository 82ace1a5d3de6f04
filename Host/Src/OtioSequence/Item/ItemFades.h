#pragma once

#include "ItemMaker.h"

#include <cstdint>

namespace SonaroHost::Otio
{

// What transitions do to the ends of an item, in frames within it.
struct ItemEnds
{
	// What crossfades do, which may lie wholly on the other side.
	bool mHasCrossfadeBefore = false;
	bool mHasCrossfadeAfter = false;
	std::int64_t mTakenBefore = 0;
	std::int64_t mTakenAfter = 0;
	// What fades from and to silence take.
	std::int64_t mFadeIn = 0;
	std::int64_t mFadeOut = 0;
	FadeShape mFadeInShape = FadeShape::kLinear;
	FadeShape mFadeOutShape = FadeShape::kLinear;
};

// Gives ioItem its fades, by transitions or by its settings, made short enough for it, and notes those that cannot
// be.
void PlaceFades(MakerContext& ioContext, Item const& inItem, Placement const& inPlacement, Grid const& inGrid,
	ItemEnds inEnds, Sequence::Item& ioItem);

// Whether there are any by its settings.
bool HasFades(Item const& inItem);

} // namespace SonaroHost::Otio
