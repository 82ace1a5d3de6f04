#include "ItemMaker.h"

#include "AngleRows.h"
#include "ClipStretch.h"
#include "ItemEffects.h"
#include "MulticamCuts.h"
#include "OtioSequence/Survey/Audibility.h"
#include "RampRows.h"

#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/NumberText.h"
#include "SonaroHost/Otio/Labels.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace SonaroHost::Otio
{

namespace
{

// inFirst: where a clip's content begins in its recording. The frame before it is the first one that is heard backwards.
void SetContent(Sequence::Clip inContent, Ratio const& inFirst, bool inIsBackwards, Sequence::Item& outItem)
{
	inContent.mFirstFrame = inFirst.Round() - (inIsBackwards ? 1 : 0);
	outItem.mOffset = inFirst - Ratio(inFirst.Round());
	outItem.mContent = std::move(inContent);
}

// The times of the sequence at which the direction of an item's content changes.
std::vector<Ratio> FindTurns(Placement const& inPlacement, ItemTiming const& inTiming)
{
	std::vector<Ratio> turns = inTiming.mCurve ? inTiming.mCurve->FindTurns() : std::vector<Ratio>();
	std::ranges::for_each(turns, [&](Ratio& ioTurn) { ioTurn += inPlacement.mStart; });
	return turns;
}

// That from the first moment of a span to the last.
Ratio FindMeanSpeed(TimeMap const& inToContent, TimeSpan const& inSpan)
{
	return inToContent.IsLinear() || inSpan.IsEmpty()
			   ? inToContent.GetFactor()
			   : (inToContent.Map(inSpan.mEnd) - inToContent.Map(inSpan.mStart)) /
					 (inSpan.mEnd - inSpan.mStart);
}

} // namespace

std::optional<Sequence::Item> ItemMaker::Make(
	ItemView const& inItem, Placement const& inPlacement, LevelsOn inLevelsOn)
{
	Item const& item = *inItem.mItem;
	std::string whySilent = mScope.mWhySilent.empty() ? FindSilence(item) : mScope.mWhySilent;
	if (mScope.mWhySilent.empty() && item.mIsEnabled && GetSpeed(item).mIsFrozen)
	{
		mContext.Tell(Note::Kind::kRemark, item.mPlace, "a freeze frame is silent");
	}
	ItemTiming const timing = MakeTiming(inItem, inPlacement, mContext.mRanges, mScope.mGrid);
	AddMarkers(inItem, inPlacement, timing);
	if (whySilent.empty() && timing.mReach.Intersect(mScope.mNeeded).IsEmpty())
	{
		whySilent = "it is trimmed off by its parent track or stack, or has zero length";
	}
	if (whySilent.empty())
	{
		TellStretch(inItem, timing);
	}
	return inItem.mClip ? MakeClip(*inItem.mClip, inPlacement, timing, std::move(whySilent), inLevelsOn)
						: MakeNest(inItem, inPlacement, timing, whySilent, inLevelsOn);
}

void ItemMaker::TellStretch(ItemView const& inItem, ItemTiming const& inTiming)
{
	Ratio const start = inTiming.mRange.mStart;
	std::string const content = inItem.mClip ? "media" : "content";
	if (inTiming.mCurve)
	{
		SpeedCurve::Span const speeds = inTiming.mCurve->GetSpeeds(Ratio(), inTiming.mRange.mLength);
		SpeedCurve::Span const way = inTiming.mCurve->GetPositions(Ratio(), inTiming.mRange.mLength);
		if (speeds.mFirst < Ratio())
		{
			mContext.Tell(Note::Kind::kRemark, inItem.mItem->mPlace,
				"speeds from " + FormatNumber(speeds.mFirst.ToDouble()) + " to " +
					FormatNumber(speeds.mLast.ToDouble()) + " play the " + content + " from " +
					DescribeSpan({start, start + way.mLast - way.mFirst}) + ", in reverse below 0");
		}
	}
	else if (inTiming.mSpeed < Ratio())
	{
		mContext.Tell(Note::Kind::kRemark, inItem.mItem->mPlace,
			"speed " + FormatNumber(inTiming.mSpeed.ToDouble()) + " plays the " + content +
				" in reverse, from " + DescribeTime(start - inTiming.mSpeed * inTiming.mRange.mLength) +
				" back to " + DescribeTime(start));
	}
}

void ItemMaker::AddMarkersOf(ItemView const& inItem)
{
	Placement const placement =
		MakePlacement(Ratio(), mContext.mRanges.GetRange(inItem).mLength, mScope.mGrid);
	AddMarkers(inItem, placement, MakeTiming(inItem, placement, mContext.mRanges, mScope.mGrid));
}

Sequence::Item ItemMaker::MakeSilence(ItemView const& inItem, Placement const& inPlacement) const
{
	Sequence::Media media;
	media.mLayout = mLayout;
	// An item at speed 0 opens nothing.
	media.mOpen = [](SN::FrameRate const&) { return SN::InterfaceRef<SN::IAudioSource>(); };
	Sequence::Item item = MakeItem(inItem, inPlacement, {});
	item.mContent = Sequence::Clip{std::make_shared<Sequence::Media const>(std::move(media)), 0, {}};
	item.mSpeed = 0.0;
	return item;
}

Sequence::Item ItemMaker::MakeItem(
	ItemView const& inItem, Placement const& inPlacement, ItemTiming const& inTiming) const
{
	Sequence::Item item;
	item.mName = GetLabel(inItem);
	item.mOrigin = inItem.mItem->mPlace;
	item.mStart = mScope.mGrid.ToTicks(inPlacement.mFirstFrame);
	item.mEnd = mScope.mGrid.ToTicks(inPlacement.mEndFrame);
	item.mSpeed = inTiming.mSpeed.ToDouble();
	if (inTiming.mCurve)
	{
		// It counts from the first frame, which is not always the exact start.
		Ratio const early = inPlacement.mStart - mScope.mGrid.ToTime(inPlacement.mFirstFrame);
		item.mSpeedCurve = std::make_shared<SpeedCurve const>(inTiming.mCurve->MoveBy(early));
	}
	item.mResampling = mContext.mOptions.mResampling;
	return item;
}

void ItemMaker::AddMarkers(ItemView const& inItem, Placement const& inPlacement, ItemTiming const& inTiming)
{
	if (inItem.mItem->mMarkers.empty())
	{
		return;
	}
	TimeSpan const visible = TimeSpan{inPlacement.mStart, inPlacement.mEnd}.Intersect(mScope.mVisible);
	TimeSpan const heard = inTiming.mToContent.Map(visible);
	TimeMap const toSequence = inTiming.mToContent.Invert();
	for (Marker const& marker : inItem.mItem->mMarkers)
	{
		Ratio const start = ToSeconds(marker.mMarkedRange.mStartTime);
		Ratio const end = start + ToSeconds(marker.mMarkedRange.mDuration);
		// One without length may stand at the end.
		if (end < heard.mStart || heard.mEnd < start)
		{
			continue;
		}
		TimeSpan const whole = toSequence.Map(TimeSpan{start, end});
		TimeSpan const marked = whole.Intersect(visible);
		Ratio const first = mScope.mToProgramme.Map(marked.mStart);
		Ratio const last = mScope.mToProgramme.Map(marked.mEnd);
		mContext.mResult.mMarkers.push_back(
			{marker.mName, marker.mComment, AppendLabel(mScope.mTrack, GetLabel(inItem)), marker.mPlace,
				std::min(first, last), std::max(first, last), marker.mColor});
	}
}

void ItemMaker::AddLevels(Item const& inItem, SN::AudioChannelLayout const& inFrom, Ratio const& inLength,
	Sequence::Chain& outChain)
{
	CurveTiming const curveTiming{inLength, SN::kTimeZero};
	outChain.mStages = MakeEffects(mContext, inItem, inFrom, curveTiming);
	std::ranges::move(MakeFaders(inItem, curveTiming), std::back_inserter(outChain.mStages));
	outChain.mPan = MakePanBetween(mContext, inFrom, mLayout, FindPan(inItem), curveTiming, inItem.mPlace);
}

void ItemMaker::CheckWidth(Item const& inItem, SN::AudioChannelLayout const& inFrom)
{
	bool const losesChannels = inFrom.size() > mLayout.size() && !(HasPlaces(inFrom) && HasPlaces(mLayout));
	if (losesChannels)
	{
		mContext.Tell(Note::Kind::kIgnored, inItem.mPlace,
			"only the first channels of " + GetLayoutName(inFrom) + " are heard in " +
				GetLayoutName(mLayout) +
				"; use a wider layout, or select channels with \"channels\" in the metadata.sonaro of clips");
	}
}

std::optional<Sequence::Item> ItemMaker::MakeClip(Clip const& inClip, Placement const& inPlacement,
	ItemTiming const& inTiming, std::string inWhySilent, LevelsOn inLevelsOn)
{
	ClipMedia const* const media = inWhySilent.empty() ? &mContext.mMedia.Get(inClip) : nullptr;
	Ratio const mediaStart = media ? ChooseMediaStart(inClip, inPlacement, inTiming, *media) : Ratio();
	ClipRow::Status status = inWhySilent.empty() ? ClipRow::Status::kHeard : ClipRow::Status::kSilent;
	if (media && !media->mMedia)
	{
		status = media->mIsMissing ? ClipRow::Status::kMissing : ClipRow::Status::kSilent;
		inWhySilent = media->mWhySilent;
	}
	else if (media)
	{
		inWhySilent = CheckClip(inClip, inPlacement, inTiming, {*media, mediaStart}, status);
	}
	ClipStretches stretches;
	if (inWhySilent.empty())
	{
		TimeSpan const& reach = inTiming.mReach;
		stretches.mRamp = ChooseRampStretch(mContext, inClip, inTiming,
			{reach.mStart - inPlacement.mStart, reach.mEnd - inPlacement.mStart},
			{Ratio::FromDouble(media->mMedia->mSampleRate), mediaStart});
		stretches.mConstant = stretches.mRamp ? std::nullopt : ChooseStretch(mContext, inClip);
	}
	bool const keepsPitch =
		stretches.mRamp || (stretches.mConstant && stretches.mConstant->mSpeed != Ratio(1));
	AddClipRow(inClip, inPlacement, inTiming, media,
		{status, inWhySilent, mediaStart, stretches.mRamp || stretches.mConstant, keepsPitch});
	if (status == ClipRow::Status::kMissing || status == ClipRow::Status::kOutside)
	{
		mContext.mResult.mMissing.push_back(
			{inClip.mName, mScope.mTrack, inClip.mPlace, media->mPath, inWhySilent});
	}
	if (!inWhySilent.empty())
	{
		return std::nullopt;
	}
	Sequence::Item item = MakeItem(inClip, inPlacement, inTiming);
	AddContent(inPlacement, inTiming, {*media, mediaStart}, stretches, item);
	SN::AudioChannelLayout const& layout = media->mLayout;
	CheckWidth(inClip, layout);
	if (inLevelsOn == LevelsOn::kItem)
	{
		AddLevels(inClip, layout, inTiming.mRange.mLength, item.mChain);
	}
	return item;
}

void ItemMaker::AddContent(Placement const& inPlacement, ItemTiming const& inTiming,
	StartedMedia const& inMedia, ClipStretches const& inStretches, Sequence::Item& ioItem)
{
	Ratio const rate = Ratio::FromDouble(inMedia.mMedia.mMedia->mSampleRate);
	Sequence::Clip content{inMedia.mMedia.mMedia, 0, inMedia.mMedia.mChannels};
	Ratio first = (inTiming.mFirst - inMedia.mStart) * rate;
	if (auto const& ramp = inStretches.mRamp)
	{
		content.mMedia =
			mContext.mMedia.GetStretched(inMedia.mMedia, ramp->mStretch, {0, ramp->mStretch.mRamp->mFrames});
		first = ramp->FindPlace(mScope.mGrid.ToTime(inPlacement.mFirstFrame) - inPlacement.mStart, rate);
		ioItem.mSpeed = ramp->mIsBackwards ? -1.0 : 1.0;
		ioItem.mSpeedCurve.reset();
	}
	else if (auto const& stretch = inStretches.mConstant)
	{
		content.mMedia =
			GetStretched(mContext, *stretch, inMedia.mMedia, inTiming.mReachInContent, inMedia.mStart);
		first = first / stretch->mSpeed;
		ioItem.mSpeed = (inTiming.mSpeed / stretch->mSpeed).ToDouble();
		if (ioItem.mSpeedCurve)
		{
			ioItem.mSpeedCurve = std::make_shared<SpeedCurve const>(
				ioItem.mSpeedCurve->MultiplyBy(Ratio(1) / stretch->mSpeed));
		}
	}
	SetContent(std::move(content), first, inTiming.mIsBackwards, ioItem);
}

std::string ItemMaker::CheckClip(Clip const& inClip, Placement const& inPlacement, ItemTiming const& inTiming,
	StartedMedia const& inMedia, ClipRow::Status& outStatus)
{
	Sequence::Media const& file = *inMedia.mMedia.mMedia;
	Ratio const rate = Ratio::FromDouble(file.mSampleRate);
	Content const content{{inMedia.mStart, inMedia.mStart + Ratio(file.mFrames) / rate}, rate, "media", true};
	std::string whySilent;
	if (ContentChecks::IsOutside(inTiming, content.mSpan))
	{
		outStatus = ClipRow::Status::kOutside;
		TimeSpan const wanted = inTiming.mToContent.Map(TimeSpan{inPlacement.mStart, inPlacement.mEnd});
		whySilent = "covers " + DescribeSpan(content.mSpan) + ", but the clip uses " + DescribeSpan(wanted);
		mContext.Tell(Note::Kind::kIgnored, inClip.mPlace,
			QuotePath(inMedia.mMedia.mPath) + " " + whySilent +
				"; the clip is silent; correct its source_range or the available_range of the media");
		return whySilent;
	}
	mChecks.CheckReach(inClip, inPlacement, inTiming, content);
	whySilent = mChecks.CheckSpeed(inClip, inTiming, rate / Ratio(mScope.mGrid.GetSampleRate()));
	outStatus = whySilent.empty() ? ClipRow::Status::kHeard : ClipRow::Status::kSilent;
	return whySilent;
}

Ratio ItemMaker::ChooseMediaStart(
	Clip const& inClip, Placement const& inPlacement, ItemTiming const& inTiming, ClipMedia const& inMedia)
{
	MediaReference const* const reference = inClip.FindActiveMedia();
	if (reference && reference->mAvailableRange)
	{
		return ToSeconds(reference->mAvailableRange->mStartTime);
	}
	if (!inMedia.mMedia || !inMedia.mStart || !inClip.mSourceRange)
	{
		return {};
	}
	Ratio const length = Ratio(inMedia.mMedia->mFrames) / Ratio::FromDouble(inMedia.mMedia->mSampleRate);
	TimeSpan const wanted = inTiming.mToContent.Map(TimeSpan{inPlacement.mStart, inPlacement.mEnd});
	auto const fits = [&](Ratio const& inStart)
	{ return inStart <= wanted.mStart && wanted.mEnd <= inStart + length; };
	auto const isOutside = [&](Ratio const& inStart) {
		return ContentChecks::IsOutside(inTiming, {inStart, inStart + length});
	};
	Ratio const start = *inMedia.mStart;
	if (fits(Ratio()) || (!fits(start) && (isOutside(start) || !isOutside(Ratio()))))
	{
		return {};
	}
	mContext.Tell(Note::Kind::kGuess, inClip.mPlace,
		"the source_range fits " + QuotePath(inMedia.mPath) +
			" only if it is counted from the file's own start, " + inMedia.mStartText +
			"; it is counted from there");
	return start;
}

void ItemMaker::AddClipRow(Clip const& inClip, Placement const& inPlacement, ItemTiming const& inTiming,
	ClipMedia const* inMedia, ClipState const& inState)
{
	ClipRow row;
	row.mName = inClip.mName;
	row.mTrack = mScope.mTrack;
	row.mPlace = inClip.mPlace;
	row.mReason = inState.mWhySilent;
	row.mStatus = inState.mStatus;
	int const rate = mScope.mGrid.GetSampleRate();
	TimeSpan const visible =
		mScope.mToProgramme.Map(TimeSpan{inPlacement.mStart, inPlacement.mEnd}.Intersect(mScope.mVisible));
	row.mFirstFrame = ToSamples(visible.mStart, rate);
	row.mEndFrame = ToSamples(visible.mEnd, rate);
	TimeMap const toContent = inTiming.mToContent.After(mScope.mToProgramme.Invert());
	row.mHasChangingSpeed = !toContent.IsLinear();
	row.mSpeed = FindMeanSpeed(toContent, visible).ToDouble();
	row.mKeepsPitch = inState.mKeepsPitch;
	row.mSemitones = inState.mIsStretched ? inClip.GetSettings().mSemitones : 0.0;
	row.mMedia = inMedia ? inMedia->mPath : std::filesystem::path();
	row.mDenoise = inMedia ? inMedia->mDenoise : std::nullopt;
	if (inMedia && inMedia->mMedia)
	{
		double const mediaRate = inMedia->mMedia->mSampleRate;
		TimeSpan const used =
			toContent.Map(TimeSpan{Ratio(row.mFirstFrame, rate), Ratio(row.mEndFrame, rate)});
		Ratio const& start = inState.mMediaStart;
		row.mMediaRate = static_cast<int>(mediaRate);
		row.mFirstMediaSample = (used.mStart - start).RoundTimes(row.mMediaRate);
		row.mEndMediaSample = (used.mEnd - start).RoundTimes(row.mMediaRate);
		row.mRamp = MakeRampRow(inPlacement, inTiming, mScope, {Ratio::FromDouble(mediaRate), start});
	}
	mContext.mResult.mClips.push_back(std::move(row));
}

std::optional<Sequence::Item> ItemMaker::MakeNest(ItemView const& inItem, Placement const& inPlacement,
	ItemTiming const& inTiming, std::string inWhySilent, LevelsOn inLevelsOn)
{
	Item const& item = *inItem.mItem;
	if (inItem.mTrack && !inItem.mTrack->IsAudio())
	{
		mContext.Tell(Note::Kind::kRemark, item.mPlace, "a nested track that is not of kind Audio is silent");
		return std::nullopt;
	}
	if (inWhySilent.empty())
	{
		CheckPitchOfNest(mContext, item);
	}
	inWhySilent = inWhySilent.empty() ? CheckNest(inItem, inPlacement, inTiming) : std::move(inWhySilent);
	NestStart start;
	Scope scope = MakeInnerScope(inItem, inPlacement, inTiming, inWhySilent, start);
	SN::AudioChannelLayout const layout = inWhySilent.empty() ? ChooseNestLayout(inItem) : mLayout;
	// Otherwise it has a row already, or is the sum.
	if (inLevelsOn == LevelsOn::kItem && &item != mContext.mTimelineStack)
	{
		AddNestRow(item, scope, layout);
		scope.mDepth += inItem.mStack ? 1 : 0;
	}
	std::size_t const row = mContext.mResult.mAngles.size();
	auto const sequences = mContext.mMakeNested(inItem, scope, layout);
	bool const isEmpty =
		std::ranges::all_of(sequences, [](auto const& inSequence) { return inSequence->mTracks.empty(); });
	if (!inWhySilent.empty() || isEmpty)
	{
		return std::nullopt;
	}
	CheckWidth(item, layout);
	Sequence::Item result = MakeItem(inItem, inPlacement, inTiming);
	if (scope.mAngles)
	{
		AddAngleRows(mContext, *inItem.mStack, scope, row);
	}
	result.mContent = MakeNestContent(inItem, inPlacement, inTiming, {scope, start.mFrame, sequences});
	result.mOffset = start.mOffset;
	if (inLevelsOn == LevelsOn::kItem)
	{
		AddLevels(item, layout, inTiming.mRange.mLength, result.mChain);
	}
	return result;
}

decltype(Sequence::Item::mContent) ItemMaker::MakeNestContent(ItemView const& inItem,
	Placement const& inPlacement, ItemTiming const& inTiming, NestParts const& inParts)
{
	if (!IsMulticam(inItem))
	{
		return Sequence::Nest{inParts.mSequences.front(), inParts.mScope.mGrid.ToTicks(inParts.mFirstFrame)};
	}
	TimeSpan const used = inTiming.mToContent.Map(TimeSpan{inPlacement.mStart, inPlacement.mEnd});
	return MakeMulticam(mContext,
		{*inItem.mStack, inParts.mScope, inTiming.mRange.mStart, used, inParts.mFirstFrame},
		inParts.mSequences);
}

void ItemMaker::AddNestRow(Item const& inItem, Scope const& inInner, SN::AudioChannelLayout const& inLayout)
{
	bool const isHeard = inInner.mWhySilent.empty();
	mContext.mResult.mTracks.push_back({isHeard, inInner.mWhySilent, inItem.mName, inInner.mTrack,
		inItem.mPlace, 0, inInner.mDepth, inLayout, isHeard});
}

std::string ItemMaker::CheckNest(
	ItemView const& inItem, Placement const& inPlacement, ItemTiming const& inTiming)
{
	TimeSpan const content{Ratio(), mContext.mRanges.GetContentLength(inItem)};
	if (!content.IsEmpty() && ContentChecks::IsOutside(inTiming, content))
	{
		mContext.Tell(Note::Kind::kIgnored, inItem.mItem->mPlace,
			"the range lies outside its content; the item is silent; correct its source_range");
		return "its range lies outside its content";
	}
	if (!content.IsEmpty())
	{
		mChecks.CheckReach(*inItem.mItem, inPlacement, inTiming,
			{content, Ratio(mScope.mGrid.GetSampleRate()), "content", false});
	}
	return mChecks.CheckSpeed(*inItem.mItem, inTiming, Ratio(1));
}

Grid ItemMaker::MakeInnerGrid(ItemTiming const& inTiming, NestStart& outStart) const
{
	int const rate = mScope.mGrid.GetSampleRate();
	bool const isResampled =
		inTiming.mCurve || (inTiming.mSpeed != Ratio(1) && inTiming.mSpeed != Ratio(-1) &&
							   mContext.mOptions.mResampling != Sequence::Resampling::kEngine);
	if (isResampled)
	{
		// What is read first may lie between two frames, so the frames stand where their own times have them.
		Ratio const before(inTiming.mIsBackwards ? 1 : 0);
		Ratio const position = inTiming.mFirst * Ratio(rate) - before;
		std::int64_t const whole = position.Floor();
		outStart = {std::max<std::int64_t>(whole, 0), position - Ratio(whole)};
		return {rate, Ratio(whole - outStart.mFrame, rate)};
	}
	Grid const grid = Grid::MakeThrough(inTiming.mFirst, rate, outStart.mFrame);
	if (!inTiming.mIsBackwards)
	{
		return grid;
	}
	// The frame before the boundary is heard first, and there is none before 0.
	if (outStart.mFrame == 0)
	{
		return {rate, inTiming.mFirst - Ratio(1, rate)};
	}
	--outStart.mFrame;
	return grid;
}

Scope ItemMaker::MakeInnerScope(ItemView const& inItem, Placement const& inPlacement,
	ItemTiming const& inTiming, std::string const& inWhySilent, NestStart& outStart) const
{
	Scope scope{MakeInnerGrid(inTiming, outStart), mScope.mToProgramme.After(inTiming.mToContent.Invert()),
		{}, {}, mScope.mTrack, mScope.mDepth, inWhySilent, {}, {}};
	TimeSpan const own{inPlacement.mStart, inPlacement.mEnd};
	TimeSpan const& reach = inTiming.mReach;
	scope.mVisible = inTiming.mToContent.Map(own.Intersect(mScope.mVisible));
	scope.mNeeded = inTiming.mToContent.Map(reach.Intersect(mScope.mNeeded));
	scope.mHearing = std::make_shared<Hearing const>(mScope.mHearing,
		FrameTimes(mScope.mToProgramme.Invert(), mScope.mGrid.GetSampleRate()), reach,
		FindTurns(inPlacement, inTiming));
	if (inItem.mItem != mContext.mTimelineStack)
	{
		scope.mTrack = AppendLabel(mScope.mTrack, GetLabel(inItem));
		++scope.mDepth;
	}
	if (IsMulticam(inItem) && inWhySilent.empty())
	{
		scope.mAngles = FindAngles(*inItem.mStack, inTiming.mRange.mStart, scope);
	}
	return scope;
}

SN::AudioChannelLayout ItemMaker::ChooseNestLayout(ItemView const& inItem) const
{
	SN::AudioChannelLayout const& width = mContext.mLayouts.GetInnerWidth(inItem);
	bool const isTold = inItem.mStack && inItem.mItem->GetSettings().mLayout;
	return isTold ? width : Layouts::Limit(width, mLayout);
}

Sequence::NumberParameter MakePanBetween(MakerContext& ioContext, SN::AudioChannelLayout const& inFrom,
	SN::AudioChannelLayout const& inTo, Curve const* inPan, CurveTiming const& inTiming,
	std::string const& inPlace)
{
	if (inPan && !Layouts::CanPan(inFrom, inTo))
	{
		ioContext.Tell(Note::Kind::kIgnored, inPlace,
			"cannot pan " + GetLayoutName(inFrom) + " to " + GetLayoutName(inTo) + "; the pan is ignored");
		return {};
	}
	return inPan ? MakePan(*inPan, inTiming) : Sequence::NumberParameter();
}

} // namespace SonaroHost::Otio
