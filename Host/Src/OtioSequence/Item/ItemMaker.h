#pragma once

#include "ContentChecks.h"
#include "OtioSequence/MakerContext.h"
#include "OtioSequence/Scope.h"
#include "OtioSequence/Survey/Levels.h"
#include "RampStretch.h"

#include <cstdint>
#include <optional>

namespace SonaroHost::Otio
{

// Makes a sequence's item of a clip or a composition.
//
// Content  What a range from s on that is d long plays at speed k: forward, from s to s + k d; backward, from
//          s + |k| d back to s, the last sample before s + |k| d first.
class ItemMaker
{
public:
	// What its levels are applied to: the item, or the track that it alone stands on.
	enum class LevelsOn
	{
		kItem,
		kTrack,
	};

	// Both outlive this object. inLayout: the layout of the track that it stands on.
	ItemMaker(MakerContext& ioContext, Scope const& inScope, SN::AudioChannelLayout const& inLayout)
		: mContext(ioContext),
		  mScope(inScope),
		  mLayout(inLayout),
		  mChecks(ioContext)
	{
	}

	// Adds the rows of all that is in it. Gives nothing where nothing of it is heard. Its fades are left to the
	// caller.
	std::optional<Sequence::Item> Make(
		ItemView const& inItem, Placement const& inPlacement, LevelsOn inLevelsOn);

	// Adds only the markers of one that stands at the scope's time 0.
	void AddMarkersOf(ItemView const& inItem);

	// Silence in the item's place.
	Sequence::Item MakeSilence(ItemView const& inItem, Placement const& inPlacement) const;

private:
	struct ClipState
	{
		ClipRow::Status mStatus;
		std::string const& mWhySilent;
		Ratio const& mMediaStart;
		bool mIsStretched;
		bool mKeepsPitch;
	};
	// How a clip's media are stretched, one way at most.
	struct ClipStretches
	{
		std::optional<Stretch> mConstant;
		std::optional<RampStretch> mRamp;
	};

	// Media, and the time in seconds at which they start.
	struct StartedMedia
	{
		ClipMedia const& mMedia;
		Ratio const& mStart;
	};

	// Which part of its content is heard backwards.
	void TellStretch(ItemView const& inItem, ItemTiming const& inTiming);
	Sequence::Item MakeItem(
		ItemView const& inItem, Placement const& inPlacement, ItemTiming const& inTiming) const;
	void AddMarkers(ItemView const& inItem, Placement const& inPlacement, ItemTiming const& inTiming);
	void AddLevels(Item const& inItem, SN::AudioChannelLayout const& inFrom, Ratio const& inLength,
		Sequence::Chain& outChain);
	void CheckWidth(Item const& inItem, SN::AudioChannelLayout const& inFrom);
	SN::AudioChannelLayout ChooseNestLayout(ItemView const& inItem) const;

	std::optional<Sequence::Item> MakeClip(Clip const& inClip, Placement const& inPlacement,
		ItemTiming const& inTiming, std::string inWhySilent, LevelsOn inLevelsOn);
	// Gives the item what a clip plays of its media, stretched or not.
	void AddContent(Placement const& inPlacement, ItemTiming const& inTiming, StartedMedia const& inMedia,
		ClipStretches const& inStretches, Sequence::Item& ioItem);
	// The part that is visible.
	void AddClipRow(Clip const& inClip, Placement const& inPlacement, ItemTiming const& inTiming,
		ClipMedia const* inMedia, ClipState const& inState);
	// Why it cannot be heard; empty when it can. They take notes.
	std::string CheckClip(Clip const& inClip, Placement const& inPlacement, ItemTiming const& inTiming,
		StartedMedia const& inMedia, ClipRow::Status& outStatus);
	// Adds the row of a nest on a track.
	void AddNestRow(Item const& inItem, Scope const& inInner, SN::AudioChannelLayout const& inLayout);
	std::string CheckNest(ItemView const& inItem, Placement const& inPlacement, ItemTiming const& inTiming);
	// The time of the media's first sample: that of the available_range; without one 0, unless what is used of the media
	// only fits when it is counted from the start that their file states, a guess.
	Ratio ChooseMediaStart(Clip const& inClip, Placement const& inPlacement, ItemTiming const& inTiming,
		ClipMedia const& inMedia);

	std::optional<Sequence::Item> MakeNest(ItemView const& inItem, Placement const& inPlacement,
		ItemTiming const& inTiming, std::string inWhySilent, LevelsOn inLevelsOn);
	// What of a nest is heard first: a frame of its grid and, where it is resampled, the part of a frame after it.
	struct NestStart
	{
		std::int64_t mFrame = 0;
		Ratio mOffset;
	};
	// What is inside, its first frame that is heard, and its sequences.
	struct NestParts
	{
		Scope const& mScope;
		std::int64_t mFirstFrame;
		std::vector<std::shared_ptr<Sequence::Description const>> const& mSequences;
	};
	decltype(Sequence::Item::mContent) MakeNestContent(ItemView const& inItem, Placement const& inPlacement,
		ItemTiming const& inTiming, NestParts const& inParts);
	Grid MakeInnerGrid(ItemTiming const& inTiming, NestStart& outStart) const;
	Scope MakeInnerScope(ItemView const& inItem, Placement const& inPlacement, ItemTiming const& inTiming,
		std::string const& inWhySilent, NestStart& outStart) const;

	MakerContext& mContext;
	Scope const& mScope;
	SN::AudioChannelLayout const& mLayout;
	ContentChecks mChecks;
};

// A pan from one layout to another; null without a pan, and for layouts that none leads between, which a note says.
Sequence::NumberParameter MakePanBetween(MakerContext& ioContext, SN::AudioChannelLayout const& inFrom,
	SN::AudioChannelLayout const& inTo, Curve const* inPan, CurveTiming const& inTiming,
	std::string const& inPlace);

} // namespace SonaroHost::Otio
