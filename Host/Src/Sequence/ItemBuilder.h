#pragma once

#include "GraphTools.h"
#include "Place.h"

#include <cstdint>
#include <functional>

namespace SonaroHost::Sequence
{

// A nested sequence, ready to be read.
struct BuiltNest
{
	Generator mGenerator;
	// How far ahead its tracks are asked at most, and what their items need to settle.
	std::int64_t mAheadFrames = 0;
	std::int64_t mSettlingFrames = 0;
	// Whether a clone of the engine's would give the same.
	bool mIsClonable = true;
};

struct BuiltItem
{
	Generator mGenerator;
	// In frames, by its own effects.
	std::int64_t mLatency = 0;
	// So many frames behind a start in the middle of it, it gives what it would have given from its beginning
	// on.
	std::int64_t mSettlingFrames = 0;
	// Whether a clone of the engine's would give the same.
	bool mIsClonable = true;
};

// What an item is made for.
struct ItemSite
{
	Place mPlace;
	// Of the track.
	SN::AudioChannelLayout const& mLayout;
	Mixdown const& mMixdown;
	// Frames by which it begins before its own start, under a crossfade.
	std::int64_t mExtension = 0;
	// In frames, with what is under crossfades.
	std::int64_t mLength = 0;
	std::function<BuiltNest(Nest const&, Place const&)> const& mBuildNest;
};

// The engine's item of a clip or a nested sequence: what is read of the content, the chain, and, at a speed
// other than 1, the resampler behind them.
//
// Speed    Frames of content, at the graph's rate, for one of the item's: a recording's own rate is part of
//          it, as its samples are counted at the graph's.
// Latency  Where it is no whole number of the item's frames, the sound stands up to a frame of content beside
//          its place.
class ItemBuilder
{
public:
	// Both outlive this object.
	ItemBuilder(GraphTools& ioTools, ItemSite const& inSite)
		: mTools(ioTools),
		  mSite(inSite)
	{
	}

	// Once. Times of the result count from the item's start, less the extension.
	BuiltItem Build(Item const& inItem);

private:
	void CheckContent(Item const& inItem) const;
	// Frames of content for one of the item's, below 0 backwards, 0 for silence.
	double GetReadingSpeed(Item const& inItem) const;
	void CheckSpeed() const;
	SN::AudioChannelLayout GetContentLayout(Item const& inItem) const;
	Generator MakeContent(Item const& inItem, SN::AudioChannelLayout const& inLayout);
	Generator MakeContent(Clip const& inClip, SN::AudioChannelLayout const& inLayout);
	Generator MakeContent(Nest const& inNest, SN::AudioChannelLayout const& inLayout);
	// The content's frame at the item's frame 0, where inFirst is to be heard first.
	std::int64_t GetFirstFrame(std::int64_t inFirst) const
	{
		return mIsBackwards ? inFirst + mLead : inFirst - mLead;
	}

	GraphTools& mTools;
	ItemSite const& mSite;
	BuiltItem mBuilt;
	bool mIsSilent = false;
	bool mIsBackwards = false;
	// Without a sign; 1 for silence.
	double mSpeed = 1.0;
	// Frames of content that are read before the one that is to be heard first at the item's own start.
	std::int64_t mLead = 0;
};

} // namespace SonaroHost::Sequence
