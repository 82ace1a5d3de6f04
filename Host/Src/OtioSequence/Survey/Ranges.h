#pragma once

#include "ClipMedia.h"

#include "SonaroHost/Base/SpeedCurve.h"
#include "SonaroHost/Otio/Model.h"

#include <memory>
#include <unordered_map>

namespace SonaroHost::Otio
{

// A range in seconds of an item's own time.
struct ExactRange
{
	Ratio GetEnd() const { return mStart + mLength; }

	Ratio mStart;
	Ratio mLength;
};

// How fast an item's content passes, all its time warps and its own speed together.
struct Speed
{
	Ratio mFactor = Ratio(1);
	bool mIsFrozen = false;
	// Where the speed changes: what it is multiplied by at each time from the item's start on, mFactor among it.
	std::shared_ptr<SpeedCurve const> mCurve;

	bool IsPlain() const { return !mCurve && mFactor == Ratio(1); }
};

Speed GetSpeed(Item const& inItem);

// The part of the speed at which the pitch is kept, above 0: all time warps, and a speed of the item's own that stays the
// same, that keep it together. inKeepsPitch: whether those do that do not say so.
Ratio GetKeptSpeed(Item const& inItem, bool inKeepsPitch);
// Whether an item keeps its pitch at a speed of its own.
bool KeepsPitch(Item const& inItem, bool inKeepsPitch);

// An item as what it is: at most one of the classes is there, none for a gap and for a transition.
struct ItemView
{
	ItemView(Composable const& inChild);
	ItemView(Clip const& inClip);
	ItemView(Track const& inTrack);
	ItemView(Stack const& inStack);

	Item const* mItem = nullptr;
	Clip const* mClip = nullptr;
	Track const* mTrack = nullptr;
	Stack const* mStack = nullptr;
};

// How long things are. Where the timeline does not say, the file of a clip is asked, except below tracks that are not
// heard.
class Ranges
{
public:
	// Both outlive this object.
	Ranges(ClipMediaTable& ioMedia, std::vector<Note>& ioNotes)
		: mMedia(ioMedia),
		  mNotes(ioNotes)
	{
	}

	// What is used of an item: its source_range, or all that it holds.
	ExactRange GetRange(ItemView const& inItem);
	// All that a track or a stack holds, from 0 on.
	Ratio GetContentLength(ItemView const& inComposition);

private:
	ExactRange MeasureMedia(Clip const& inClip);
	Ratio AddUp(ItemView const& inComposition);

	ClipMediaTable& mMedia;
	std::vector<Note>& mNotes;
	bool mIsHeard = true;
	std::unordered_map<Item const*, Ratio> mLengths;
};

} // namespace SonaroHost::Otio
