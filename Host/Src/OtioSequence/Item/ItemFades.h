#pragma once

#include "ItemMaker.h"

#include <cstdint>

namespace SonaroHost::Otio
{

// What transitions do to an end of an item, in frames within it.
struct ItemEnd
{
	// What a crossfade does, which may lie wholly on the other side.
	bool mHasCrossfade = false;
	std::int64_t mTaken = 0;
	// What a fade from or to silence takes.
	std::int64_t mFade = 0;
	FadeShape mShape = FadeShape::kLinear;
};

struct ItemEnds
{
	ItemEnd mStart;
	ItemEnd mEnd;
};

// Frames of a fade so long at the start or the end of an item.
std::int64_t CountFrames(
	Ratio const& inFade, bool inIsAtStart, Placement const& inPlacement, Grid const& inGrid);

// Gives ioItem its fades, by transitions or by its settings, made short enough for it, and notes those that cannot
// be.
void PlaceFades(MakerContext& ioContext, Item const& inItem, Placement const& inPlacement, Grid const& inGrid,
	ItemEnds inEnds, Sequence::Item& ioItem);

// Makes an item that stands alone on its track, with its fades, and adds it where it is heard.
void AddOnlyItem(MakerContext& ioContext, ItemView const& inItem, Scope const& inScope,
	ItemMaker::LevelsOn inLevelsOn, Sequence::Track& ioTrack);

// Whether there are any by its settings.
bool HasFades(Item const& inItem);

} // namespace SonaroHost::Otio
