#include "SonaroHost/Picture/TimelinePicture.h"

#include "SonaroHost/Otio/Labels.h"
#include "SonaroHost/Sequence/Description.h"
#include "zorvmediatypes/FrameRate.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace SonaroHost
{

namespace
{

using Span = TimelinePicture::Span;
using Lane = TimelinePicture::Lane;

double GetSeconds(SN::TickTime const& inTime)
{
	return static_cast<double>(inTime.GetTicks()) / static_cast<double>(zorvmediatypes::kTicksPerSecond);
}

Span Intersect(Span const& inA, Span const& inB)
{
	double const start = std::max(inA.mStart, inB.mStart);
	return {start, std::max(start, std::min(inA.mEnd, inB.mEnd))};
}

// A sequence within the programme.
struct Window
{
	// Backwards where the factor is below 0.
	Span Map(double inStart, double inEnd) const
	{
		double const a = mStart + inStart * mFactor;
		double const b = mStart + inEnd * mFactor;
		return {std::min(a, b), std::max(a, b)};
	}

	// When its time 0 is, and the programme's seconds in one of its own.
	double mStart = 0.0;
	double mFactor = 1.0;
	// The part of the programme in which it is visible.
	Span mVisible;
};

// By how many seconds the crossfade into an item begins before it.
double FindLead(Sequence::Track const& inTrack, std::size_t inItem)
{
	auto const found = std::ranges::find_if(inTrack.mCrossfades,
		[inItem](Sequence::Crossfade const& inCrossfade) { return inCrossfade.mOutgoing + 1 == inItem; });
	return found != inTrack.mCrossfades.end() ? GetSeconds(found->mBefore) : 0.0;
}

class PictureMaker
{
public:
	explicit PictureMaker(Otio::TimelineSequence const& inSequence)
		: mSequence(inSequence)
	{
	}

	TimelinePicture Make(Otio::Timeline const& inTimeline)
	{
		double const rate = mSequence.mSampleRate;
		mPicture.mTitle = inTimeline.mName;
		mPicture.mLength = static_cast<double>(mSequence.mFrames) / rate;
		mPicture.mTimecode = Otio::ProgrammeTimecode::Find(inTimeline, mSequence);
		Lane& mix = mPicture.mLanes.emplace_back();
		mix.mName = "Mix";
		mix.mPath = "the mix";
		AddLanes();
		Walk(*mSequence.mDescription,
			{-static_cast<double>(mSequence.mFirstFrame) / rate, 1.0, {0.0, mPicture.mLength}}, 0);
		AddClips();
		AddMarkers();
		return std::move(mPicture);
	}

private:
	void AddLanes()
	{
		for (Otio::TrackRow const& row : mSequence.mTracks)
		{
			if (!row.mIsAudio)
			{
				continue;
			}
			auto const around = FindAround(std::string_view(row.mPlace).substr(0, row.mPlace.rfind('/')));
			std::string const start = around ? mPicture.mLanes[*around].mPath + " / " : std::string();
			mLanes.emplace(row.mPlace, mPicture.mLanes.size());
			Lane& lane = mPicture.mLanes.emplace_back();
			lane.mPath = row.mTrack;
			lane.mName = row.mTrack.starts_with(start) ? row.mTrack.substr(start.size()) : row.mTrack;
			lane.mWhySilent = row.mIsHeard ? std::string() : row.mReason;
			lane.mDepth = row.mDepth;
		}
	}

	std::optional<std::size_t> Find(std::string const& inPlace) const
	{
		auto const found = mLanes.find(inPlace);
		return found != mLanes.end() ? std::optional(found->second) : std::nullopt;
	}

	// The lane of a place or of what it stands in.
	std::optional<std::size_t> FindAround(std::string_view inPlace) const
	{
		std::optional<std::size_t> lane = Find(std::string(inPlace));
		while (!lane && inPlace.rfind('/') != std::string_view::npos)
		{
			inPlace = inPlace.substr(0, inPlace.rfind('/'));
			lane = Find(std::string(inPlace));
		}
		return lane;
	}

	// inLane: that of tracks that have none of their own.
	void Walk(Sequence::Description const& inDescription, Window const& inWindow, std::size_t inLane)
	{
		for (Sequence::Track const& track : inDescription.mTracks)
		{
			std::size_t const lane = Find(track.mOrigin).value_or(inLane);
			SetClock(track.mOrigin, inWindow);
			for (std::size_t index = 0; index < track.mItems.size(); ++index)
			{
				AddNest(track.mItems[index], FindLead(track, index), inWindow, lane);
				AddFades(track.mItems[index], inWindow, lane);
			}
			for (Sequence::Crossfade const& crossfade : track.mCrossfades)
			{
				double const cut = GetSeconds(track.mItems[crossfade.mOutgoing].mEnd);
				Span const span{cut - GetSeconds(crossfade.mBefore), cut + GetSeconds(crossfade.mAfter)};
				AddFade(span, crossfade.mOutgoingShape, false, inWindow, lane);
				AddFade(span, crossfade.mIncomingShape, true, inWindow, lane);
			}
		}
	}

	// The first one counts: a track is heard where one item is all of it.
	void SetClock(std::string const& inOrigin, Window const& inWindow)
	{
		if (auto const index = Find(inOrigin); index && mPicture.mLanes[*index].mOrigin.empty())
		{
			Lane& lane = mPicture.mLanes[*index];
			lane.mOrigin = inOrigin;
			lane.mClock = {inWindow.mStart, inWindow.mFactor / mSequence.mSampleRate};
		}
	}

	// inLead: seconds by which a crossfade begins before the item.
	void AddNest(Sequence::Item const& inItem, double inLead, Window const& inWindow, std::size_t inLane)
	{
		auto const sequences = Sequence::ListSequences(inItem);
		if (sequences.empty() || inItem.mSpeed == 0.0)
		{
			return;
		}
		SN::TickTime const first = Sequence::GetSequenceStart(inItem);
		double const start = GetSeconds(inItem.mStart);
		Window inner;
		inner.mFactor = inWindow.mFactor / inItem.mSpeed;
		inner.mStart = inWindow.mStart + start * inWindow.mFactor - GetSeconds(first) * inner.mFactor;
		inner.mVisible = Intersect(inWindow.Map(start, GetSeconds(inItem.mEnd)), inWindow.mVisible);
		auto const own = Find(inItem.mOrigin);
		if (own && *own != inLane)
		{
			mPicture.mLanes[inLane].mBlocks.push_back(
				{inItem.mName, {}, inner.mVisible, TimelinePicture::BlockKind::kNest});
			// An item counts from where it is heard first, before a crossfade.
			Window heard = inWindow;
			heard.mStart += (start - inLead) * inWindow.mFactor;
			SetClock(inItem.mOrigin, heard);
		}
		// Where the speed changes, no factor leads from the times within: tracks there have their names and clips alone.
		for (std::size_t index = 0; index < sequences.size() && !inItem.mSpeedCurve; ++index)
		{
			Walk(*sequences[index], inner, own.value_or(inLane));
		}
	}

	void AddFades(Sequence::Item const& inItem, Window const& inWindow, std::size_t inLane)
	{
		double const start = GetSeconds(inItem.mStart);
		double const end = GetSeconds(inItem.mEnd);
		AddFade({start, start + GetSeconds(inItem.mFadeIn.mLength)}, inItem.mFadeIn.mShape, true, inWindow,
			inLane);
		AddFade({end - GetSeconds(inItem.mFadeOut.mLength), end}, inItem.mFadeOut.mShape, false, inWindow,
			inLane);
	}

	void AddFade(
		Span const& inSpan, FadeShape inShape, bool inIsRising, Window const& inWindow, std::size_t inLane)
	{
		Span const span = inWindow.Map(inSpan.mStart, inSpan.mEnd);
		Span const visible = Intersect(span, inWindow.mVisible);
		if (visible.mStart < visible.mEnd)
		{
			mPicture.mLanes[inLane].mFades.push_back(
				{span, visible, inShape, inIsRising == (inWindow.mFactor > 0.0)});
		}
	}

	void AddClips()
	{
		double const rate = mSequence.mSampleRate;
		for (Otio::ClipRow const& row : mSequence.mClips)
		{
			auto const lane = FindAround(row.mPlace);
			if (lane && row.mFirstFrame < row.mEndFrame)
			{
				using enum TimelinePicture::BlockKind;
				bool const isHeard = row.mStatus == Otio::ClipRow::Status::kHeard;
				bool const isSilent = row.mStatus == Otio::ClipRow::Status::kSilent;
				mPicture.mLanes[*lane].mBlocks.push_back({Otio::MakeLabel(row.mName, "clip", row.mPlace),
					row.mReason,
					{static_cast<double>(row.mFirstFrame) / rate, static_cast<double>(row.mEndFrame) / rate},
					isHeard    ? kClip
					: isSilent ? kSilent
							   : kMissing});
			}
		}
		for (Lane& lane : mPicture.mLanes)
		{
			std::ranges::stable_sort(lane.mBlocks,
				[](TimelinePicture::Block const& inA, TimelinePicture::Block const& inB)
				{ return inA.mSpan.mStart < inB.mSpan.mStart; });
		}
	}

	void AddMarkers()
	{
		for (Otio::MarkerRow const& row : mSequence.mMarkers)
		{
			mPicture.mMarkers.push_back({row.mName, row.mComment, row.mColour,
				{row.mStart.ToDouble(), row.mEnd.ToDouble()}, FindAround(row.mPlace)});
		}
	}

	Otio::TimelineSequence const& mSequence;
	TimelinePicture mPicture;
	// By their places.
	std::unordered_map<std::string, std::size_t> mLanes;
};

} // namespace

TimelinePicture MakeTimelinePicture(
	Otio::Timeline const& inTimeline, Otio::TimelineSequence const& inSequence)
{
	return PictureMaker(inSequence).Make(inTimeline);
}

} // namespace SonaroHost
