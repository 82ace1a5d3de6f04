#pragma once

#include "Sequence/Node/AngleCuts.h"
#include "Sequence/Node/GraphTools.h"
#include "Sequence/Node/Place.h"
#include "Sequence/Stage/Playhead.h"
#include "SonaroHost/Media/SampleConverter.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

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
struct ItemContext
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

// The engine's item of a clip or a nested sequence: what is read of the content, converted where its rate or speed is
// another one, through the chain.
//
// Speed    Frames of content, at the graph's rate, for one of the item's: a recording's own rate is part of
//          it, as its samples are counted at the graph's.
// Engine   Where the engine resamples, it does so after the chain, which then works in frames of the content.
class ItemBuilder
{
public:
	// Both outlive this object.
	ItemBuilder(GraphTools& ioTools, ItemContext const& inContext)
		: mTools(ioTools),
		  mContext(inContext)
	{
	}

	// Called once. Times of the result count from the item's start, less the extension.
	BuiltItem Build(Item const& inItem);

private:
	// What is asked of each kind of content; one that lacks an overload does not compile.
	template <class Function>
	static auto Visit(Item const& inItem, Function const& inFunction)
	{
		return std::visit(inFunction, inItem.mContent);
	}
	void Check(Clip const& inClip) const;
	void Check(Nest const& inNest) const;
	void Check(Multicam const& inMulticam) const;
	// The content's frames for one of the graph's at the speed 1.
	Ratio GetRateRatio(Clip const& inClip) const;
	Ratio GetRateRatio(Nest const&) const { return Ratio(1); }
	Ratio GetRateRatio(Multicam const&) const { return Ratio(1); }
	double GetRateFactor(Clip const& inClip) const;
	double GetRateFactor(Nest const&) const { return 1.0; }
	double GetRateFactor(Multicam const&) const { return 1.0; }
	SN::AudioChannelLayout GetLayout(Clip const& inClip) const;
	SN::AudioChannelLayout GetLayout(Nest const& inNest) const { return inNest.mSequence->mLayout; }
	SN::AudioChannelLayout GetLayout(Multicam const& inMulticam) const
	{
		return inMulticam.mAngles.front()->mLayout;
	}
	// The content's frame that is to be heard first at the item's own start.
	std::int64_t GetFirstFrame(Clip const& inClip) const { return inClip.mFirstFrame; }
	std::int64_t GetFirstFrame(Nest const& inNest) const { return mTools.ToFrames(inNest.mStart); }
	std::int64_t GetFirstFrame(Multicam const& inMulticam) const
	{
		return mTools.ToFrames(inMulticam.mStart);
	}
	Generator MakeGenerator(Clip const& inClip, SN::AudioChannelLayout const& inLayout);
	Generator MakeGenerator(Nest const& inNest, SN::AudioChannelLayout const& inLayout);
	Generator MakeGenerator(Multicam const& inMulticam, SN::AudioChannelLayout const& inLayout);
	AngleCuts MakeCuts(Multicam const& inMulticam) const;

	Generator MakeContent(Item const& inItem, SN::AudioChannelLayout const& inLayout);
	Generator Convert(
		Item const& inItem, Generator const& inContent, SN::AudioChannelLayout const& inLayout) const;
	std::shared_ptr<SampleConverter const> MakeConverter(Item const& inItem) const;
	// The graph's frames in a second.
	Ratio GetGraphRate() const;
	void ChooseSpeed(Item const& inItem);
	void CheckStep() const;
	void CheckSpeed() const;

	GraphTools& mTools;
	ItemContext const& mContext;
	BuiltItem mBuilt;
	bool mIsSilent = false;
	bool mIsBackwards = false;
	// The speed without its sign that is left to the engine's item; 1 for silence.
	double mSpeed = 1.0;
	bool mIsConverted = false;
	// The step of the converter, if there is one and it stays the same.
	std::optional<Ratio> mStep;
	// Frames of content that are read before the one that is to be heard first at the item's own start.
	std::int64_t mLead = 0;
};

} // namespace SonaroHost::Sequence
