#pragma once

#include "Sequence/Node/GraphTools.h"
#include "Sequence/Node/Place.h"
#include "Sequence/Stage/Playhead.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace SonaroHost::Sequence
{

struct BuiltItem
{
	Generator mGenerator;
	// The latency of its own effects, in frames.
	std::int64_t mLatency = 0;
};

// Builds a nested sequence, ready to be read.
using NestMaker = std::function<Generator(Nest const&, Place const&)>;

// What an item is made for.
struct ItemSite
{
	Place mPlace;
	// The track's layout.
	SN::AudioChannelLayout const& mLayout;
	Mixdown const& mMixdown;
	// Frames by which it begins before its own start, under a crossfade.
	std::int64_t mExtension = 0;
	NestMaker const& mBuildNest;
	// The playhead of the sequence around it.
	std::shared_ptr<Playhead const> mPlayhead;
	// How often the track has jumped.
	std::shared_ptr<std::uint64_t const> mJumps;
	// Hears what leaves its last stage; null for nobody.
	SN::InterfaceRef<SN::IAudioMeterSetter> mTap;
};

// The engine's item of a clip or a nested sequence: what is read of the content through the chain, and, at a speed
// other than 1, the resampler after it.
//
// Speed    Frames of content, at the graph's rate, for one of the item's: a recording's own rate is part of
//          it, as its samples are counted at the graph's.
class ItemBuilder
{
public:
	// Both outlive this object.
	ItemBuilder(GraphTools& ioTools, ItemSite const& inSite)
		: mTools(ioTools),
		  mSite(inSite)
	{
	}

	// Called once. Times of the result count from the item's start, less the extension.
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
	// The content's frame that is to be heard first at the item's own start.
	std::int64_t GetFirstFrame(Item const& inItem) const;

	GraphTools& mTools;
	ItemSite const& mSite;
	BuiltItem mBuilt;
	bool mIsSilent = false;
	bool mIsBackwards = false;
	// The speed without its sign; 1 for silence.
	double mSpeed = 1.0;
	// Frames of content that are read before the one that is to be heard first at the item's own start.
	std::int64_t mLead = 0;
};

} // namespace SonaroHost::Sequence
