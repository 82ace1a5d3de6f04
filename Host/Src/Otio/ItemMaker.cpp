#include "ItemMaker.h"

#include "Audibility.h"
#include "Levels.h"
#include "StackMaker.h"
#include "TrackMaker.h"

#include "SonaroHost/ChannelLayouts.h"

#include <algorithm>
#include <utility>

namespace SonaroHost::Otio
{

namespace
{

// Frames from the sequence's time on that the item is asked for, crossfades among them.
TimeSpan GetReach(Placement const& inPlacement, Grid const& inGrid)
{
	return {inGrid.ToTime(inPlacement.mFirstFrame - inPlacement.mFramesBefore),
		inGrid.ToTime(inPlacement.mEndFrame + inPlacement.mFramesAfter)};
}

// Media that ends within a picture of its clip is usual.
constexpr std::int64_t kUsualGapsPerSecond = 20;

} // namespace

Placement MakePlacement(Ratio const& inStart, Ratio const& inLength, Grid const& inGrid)
{
	Ratio const end = inStart + inLength;
	return {inStart, end, inGrid.ToFrame(inStart), inGrid.ToFrame(end), 0, 0};
}

std::optional<Sequence::Item> ItemMaker::Make(
	ItemView const& inItem, Placement const& inPlacement, LevelsOn inLevelsOn)
{
	Item const& item = *inItem.mItem;
	std::string whySilent = mScope.mWhySilent.empty() ? FindSilence(item) : mScope.mWhySilent;
	if (mScope.mWhySilent.empty() && item.mIsEnabled && GetSpeed(item).mIsFrozen)
	{
		mMaking.Tell(Note::Kind::eRemark, item.mPlace, "a freeze frame is silent");
	}
	Passing const passing = FindPassing(inItem, inPlacement);
	AddMarkers(item, inPlacement, passing);
	if (whySilent.empty() && GetReach(inPlacement, mScope.mGrid).Intersect(mScope.mNeeded).IsEmpty())
	{
		whySilent = "it is cut away by what it stands in, or has no length";
	}
	return inItem.mClip ? MakeClip(*inItem.mClip, inPlacement, passing, std::move(whySilent), inLevelsOn)
						: MakeNest(inItem, inPlacement, passing, whySilent, inLevelsOn);
}

void ItemMaker::AddMarkersOf(ItemView const& inItem)
{
	Placement const placement =
		MakePlacement(Ratio(), mMaking.mMeasures.GetRange(inItem).mLength, mScope.mGrid);
	AddMarkers(*inItem.mItem, placement, FindPassing(inItem, placement));
}

Sequence::Item ItemMaker::MakeSilence(Item const& inItem, Placement const& inPlacement) const
{
	Sequence::Media media;
	media.mLayout = mLayout;
	// At speed 0 nothing is opened.
	media.mOpen = [](SN::FrameRate const&) { return SN::InterfaceRef<SN::IAudioSource>(); };
	Sequence::Item item = MakeItem(inItem, inPlacement, {});
	item.mContent = Sequence::Clip{std::make_shared<Sequence::Media const>(std::move(media)), 0, {}};
	item.mSpeed = 0.0;
	return item;
}

ItemMaker::Passing ItemMaker::FindPassing(ItemView const& inItem, Placement const& inPlacement) const
{
	Passing passing;
	passing.mRange = mMaking.mMeasures.GetRange(inItem);
	Speed const speed = GetSpeed(*inItem.mItem);
	passing.mSpeed = speed.mIsFrozen ? Ratio(1) : speed.mFactor;
	bool const isBackwards = passing.mSpeed < Ratio();
	Ratio const first = isBackwards ? passing.mRange.GetEnd() : passing.mRange.mStart;
	passing.mToContent = TimeMap(inPlacement.mStart, first, passing.mSpeed);
	passing.mFirst = passing.mToContent.Map(mScope.mGrid.ToTime(inPlacement.mFirstFrame));
	return passing;
}

Sequence::Item ItemMaker::MakeItem(
	Item const& inItem, Placement const& inPlacement, Passing const& inPassing) const
{
	Sequence::Item item;
	item.mName = inItem.mName;
	item.mStart = mScope.mGrid.ToTicks(inPlacement.mFirstFrame);
	item.mEnd = mScope.mGrid.ToTicks(inPlacement.mEndFrame);
	item.mSpeed = inPassing.mSpeed.ToDouble();
	return item;
}

void ItemMaker::AddMarkers(Item const& inItem, Placement const& inPlacement, Passing const& inPassing)
{
	TimeSpan const visible = TimeSpan{inPlacement.mStart, inPlacement.mEnd}.Intersect(mScope.mVisible);
	TimeMap const toSequence = inPassing.mToContent.Invert();
	for (Marker const& marker : inItem.mMarkers)
	{
		Ratio const start = ToSeconds(marker.mMarkedRange.mStartTime);
		Ratio const a = toSequence.Map(start);
		Ratio const b = toSequence.Map(start + ToSeconds(marker.mMarkedRange.mDuration));
		// One without length may stand at the end.
		TimeSpan const marked = TimeSpan{std::min(a, b), std::max(a, b)}.Intersect(visible);
		if (marked.mEnd < marked.mStart)
		{
			continue;
		}
		Ratio const first = mScope.mToProgramme.Map(marked.mStart);
		Ratio const last = mScope.mToProgramme.Map(marked.mEnd);
		mMaking.mResult.mMarkers.push_back(
			{marker.mName, marker.mComment, AppendName(mScope.mTrack, inItem, "item"), marker.mPlace,
				std::min(first, last), std::max(first, last)});
	}
}

void ItemMaker::AddLevels(Item const& inItem, SN::AudioChannelLayout const& inFrom, Ratio const& inLength,
	Sequence::Chain& outChain)
{
	CurveSite const site{inLength, SN::kTimeZero};
	outChain.mStages = MakeFaders(inItem, site);
	Curve const* const pan = FindPan(inItem);
	if (pan && Layouts::CanPan(inFrom, mLayout))
	{
		outChain.mPan = MakePan(*pan, site);
	}
	else if (pan)
	{
		mMaking.Tell(Note::Kind::eIgnored, inItem.mPlace,
			"no pan leads from " + GetLayoutName(inFrom) + " to " + GetLayoutName(mLayout) +
				"; it is ignored");
	}
}

void ItemMaker::CheckWidth(Item const& inItem, SN::AudioChannelLayout const& inFrom)
{
	bool const losesChannels = inFrom.size() > mLayout.size() && !(HasPlaces(inFrom) && HasPlaces(mLayout));
	if (losesChannels)
	{
		mMaking.Tell(Note::Kind::eIgnored, inItem.mPlace,
			"of " + GetLayoutName(inFrom) + " those beyond " + GetLayoutName(mLayout) +
				" are not heard; choose some by \"channels\" or another layout");
	}
}

std::optional<Sequence::Item> ItemMaker::MakeClip(Clip const& inClip, Placement const& inPlacement,
	Passing const& inPassing, std::string inWhySilent, LevelsOn inLevelsOn)
{
	ClipMedia const* const media = inWhySilent.empty() ? &mMaking.mMedia.Get(inClip) : nullptr;
	inWhySilent = media ? media->mWhySilent : std::move(inWhySilent);
	AddClipRow(inClip, inPlacement, inPassing, media, inWhySilent);
	if (media && media->mIsMissing)
	{
		mMaking.mResult.mMissing.push_back(
			{inClip.mName, mScope.mTrack, inClip.mPlace, media->mPath, media->mWhySilent});
	}
	if (!inWhySilent.empty())
	{
		return std::nullopt;
	}
	Sequence::Item item = MakeItem(inClip, inPlacement, inPassing);
	Sequence::Clip content{media->mMedia, 0, media->mChannels};
	Ratio const first =
		(inPassing.mFirst - GetMediaStart(inClip)) * Ratio::FromDouble(media->mMedia->mSampleRate);
	content.mFirstFrame = first.Round() - (inPassing.mSpeed < Ratio() ? 1 : 0);
	SN::AudioChannelLayout const& layout = mMaking.mLayouts.GetLayout(inClip);
	CheckHandles(inClip, inPlacement, inPassing, *media->mMedia);
	CheckWidth(inClip, layout);
	item.mContent = std::move(content);
	if (inLevelsOn == LevelsOn::eItem)
	{
		AddLevels(inClip, layout, inPassing.mRange.mLength, item.mChain);
	}
	return item;
}

Ratio ItemMaker::GetMediaStart(Clip const& inClip) const
{
	MediaReference const* const reference = inClip.FindActiveMedia();
	bool const tellsRange = reference && reference->mAvailableRange;
	return tellsRange ? ToSeconds(reference->mAvailableRange->mStartTime) : Ratio();
}

void ItemMaker::AddClipRow(Clip const& inClip, Placement const& inPlacement, Passing const& inPassing,
	ClipMedia const* inMedia, std::string const& inWhySilent)
{
	ClipRow row;
	row.mName = inClip.mName;
	row.mTrack = mScope.mTrack;
	row.mPlace = inClip.mPlace;
	row.mReason = inWhySilent;
	row.mStatus = inWhySilent.empty()              ? ClipRow::Status::eHeard
				  : inMedia && inMedia->mIsMissing ? ClipRow::Status::eMissing
												   : ClipRow::Status::eSilent;
	int const rate = mScope.mGrid.GetSampleRate();
	TimeSpan const visible =
		mScope.mToProgramme.Map(TimeSpan{inPlacement.mStart, inPlacement.mEnd}.Intersect(mScope.mVisible));
	row.mFirstFrame = ToSamples(visible.mStart, rate);
	row.mEndFrame = ToSamples(visible.mEnd, rate);
	row.mSpeed = (inPassing.mSpeed / mScope.mToProgramme.GetFactor()).ToDouble();
	row.mMedia = inMedia ? inMedia->mPath : std::filesystem::path();
	if (inMedia && inMedia->mMedia)
	{
		double const mediaRate = inMedia->mMedia->mSampleRate;
		TimeMap const toContent = inPassing.mToContent.After(mScope.mToProgramme.Invert());
		TimeSpan const used =
			toContent.Map(TimeSpan{Ratio(row.mFirstFrame, rate), Ratio(row.mEndFrame, rate)});
		Ratio const start = GetMediaStart(inClip);
		row.mMediaRate = static_cast<int>(mediaRate);
		row.mFirstMediaSample = ((used.mStart - start) * Ratio::FromDouble(mediaRate)).Round();
		row.mEndMediaSample = ((used.mEnd - start) * Ratio::FromDouble(mediaRate)).Round();
	}
	mMaking.mResult.mClips.push_back(std::move(row));
}

void ItemMaker::CheckHandles(Clip const& inClip, Placement const& inPlacement, Passing const& inPassing,
	Sequence::Media const& inMedia)
{
	Ratio const rate = Ratio::FromDouble(inMedia.mSampleRate);
	Ratio const start = GetMediaStart(inClip);
	TimeSpan const file{Ratio(), Ratio(inMedia.mFrames)};
	auto const findShortage = [&](TimeSpan const& inTimes)
	{
		TimeSpan const used = inPassing.mToContent.Map(inTimes);
		Ratio const first = (used.mStart - start) * rate;
		Ratio const end = (used.mEnd - start) * rate;
		return std::max(file.mStart - first, end - file.mEnd).Round();
	};
	std::int64_t const lacking = findShortage({inPlacement.mStart, inPlacement.mEnd});
	std::int64_t const lackingHandle = findShortage(GetReach(inPlacement, mScope.mGrid));
	if (lacking > 0)
	{
		bool const isUsual = Ratio(lacking * kUsualGapsPerSecond) <= rate;
		mMaking.Tell(isUsual ? Note::Kind::eRemark : Note::Kind::eIgnored, inClip.mPlace,
			"the clip reaches " + std::to_string(lacking) + " samples beyond its media; silence is there");
	}
	// More than the rounding of an end.
	else if (lackingHandle > 1)
	{
		mMaking.Tell(Note::Kind::eIgnored, inClip.mPlace,
			"a transition reaches " + std::to_string(lackingHandle) +
				" samples beyond the clip's media; silence is there");
	}
}

std::optional<Sequence::Item> ItemMaker::MakeNest(ItemView const& inItem, Placement const& inPlacement,
	Passing const& inPassing, std::string const& inWhySilent, LevelsOn inLevelsOn)
{
	Item const& item = *inItem.mItem;
	if (inItem.mTrack && !inItem.mTrack->IsAudio())
	{
		mMaking.Tell(Note::Kind::eRemark, item.mPlace, "a nested track that is not of kind Audio is silent");
		return std::nullopt;
	}
	std::int64_t first = 0;
	Scope scope{Grid::MakeThrough(inPassing.mFirst, mScope.mGrid.GetSampleRate(), first),
		mScope.mToProgramme.After(inPassing.mToContent.Invert()), {}, {}, {}, mScope.mDepth, inWhySilent};
	bool const isBackwards = inPassing.mSpeed < Ratio();
	if (isBackwards && first == 0)
	{
		// The frame before the first one's boundary is heard first, and there is none before 0.
		scope.mGrid =
			Grid(mScope.mGrid.GetSampleRate(), inPassing.mFirst - Ratio(1, mScope.mGrid.GetSampleRate()));
		first = 1;
	}
	TimeSpan const own{inPlacement.mStart, inPlacement.mEnd};
	scope.mVisible = inPassing.mToContent.Map(own.Intersect(mScope.mVisible));
	scope.mNeeded = inPassing.mToContent.Map(GetReach(inPlacement, mScope.mGrid).Intersect(mScope.mNeeded));
	if (inItem.mItem != mMaking.mTimelineStack)
	{
		scope.mTrack = AppendName(mScope.mTrack, item, inItem.mTrack ? "track" : "stack");
		++scope.mDepth;
	}
	SN::AudioChannelLayout const layout = inWhySilent.empty() ? ChooseNestLayout(inItem) : mLayout;
	auto const description = inItem.mTrack ? MakeTrackSequence(mMaking, *inItem.mTrack, scope, layout)
										   : StackMaker(mMaking, *inItem.mStack, scope, layout).Make();
	if (!inWhySilent.empty() || description->mTracks.empty())
	{
		return std::nullopt;
	}
	CheckWidth(item, layout);
	Sequence::Item result = MakeItem(item, inPlacement, inPassing);
	result.mContent = Sequence::Nest{description, scope.mGrid.ToTicks(first - (isBackwards ? 1 : 0))};
	if (inLevelsOn == LevelsOn::eItem)
	{
		AddLevels(item, layout, inPassing.mRange.mLength, result.mChain);
	}
	return result;
}

SN::AudioChannelLayout ItemMaker::ChooseNestLayout(ItemView const& inItem) const
{
	SN::AudioChannelLayout const& width = mMaking.mLayouts.GetInnerWidth(inItem);
	bool const isTold = inItem.mStack && inItem.mItem->GetSettings().mLayout;
	return isTold ? width : Layouts::Limit(width, mLayout);
}

} // namespace SonaroHost::Otio
