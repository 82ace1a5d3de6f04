#include "SonaroHost/OtioSequence/TimelineMaker.h"

#include "OtioSequence/Item/ItemEffects.h"
#include "OtioSequence/Item/ItemFades.h"
#include "OtioSequence/Item/MulticamCuts.h"
#include "OtioSequence/Survey/Audibility.h"
#include "OtioSequence/Survey/Levels.h"
#include "StackMaker.h"
#include "TimelineSilence.h"

#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Base/HostError.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace SonaroHost::Otio
{

namespace
{

constexpr int kDefaultSampleRate = 48000;

// How many clips that are heard have media of a rate; of equals the first one counts.
class RateCount
{
public:
	explicit RateCount(ClipMediaTable& ioMedia)
		: mMedia(ioMedia)
	{
	}

	void Add(Stack const& inStack)
	{
		auto const silences = FindSilences(inStack);
		for (std::size_t index = 0; index < silences.size(); ++index)
		{
			if (silences[index].empty())
			{
				Add(inStack.mChildren[index]);
			}
		}
	}

	int GetRate() const { return mBest == 0 ? kDefaultSampleRate : mBest; }

private:
	void Add(Composable const& inChild)
	{
		if (Stack const* const stack = inChild.As<Stack>())
		{
			Add(*stack);
		}
		else if (Track const* const track = inChild.As<Track>(); track && track->IsAudio())
		{
			for (Composable const& child : track->mChildren)
			{
				Item const* const item = child.AsItem();
				if (item && FindSilence(*item).empty())
				{
					Add(child);
				}
			}
		}
		else if (Clip const* const clip = inChild.As<Clip>())
		{
			Count(mMedia.Get(*clip));
		}
	}

	void Count(ClipMedia const& inMedia)
	{
		if (inMedia.mMedia)
		{
			int const rate = static_cast<int>(inMedia.mMedia->mSampleRate);
			std::size_t const count = ++mCounts[rate];
			// Only one that overtakes becomes the first.
			mBest = mBest == 0 || count > mCounts[mBest] ? rate : mBest;
		}
	}

	ClipMediaTable& mMedia;
	std::map<int, std::size_t> mCounts;
	int mBest = 0;
};

// At any depth.
std::size_t CountClips(std::vector<Composable> const& inChildren)
{
	std::size_t count = 0;
	for (Composable const& child : inChildren)
	{
		Track const* const track = child.As<Track>();
		Stack const* const stack = child.As<Stack>();
		count += child.As<Clip>() ? 1 : 0;
		count += track ? CountClips(track->mChildren) : 0;
		count += stack ? CountClips(stack->mChildren) : 0;
	}
	return count;
}

class Maker
{
public:
	Maker(Timeline const& inTimeline, MediaFinder const& inFinder, FileMedia& ioMedia,
		TimelineOptions const& inOptions)
		: mTimeline(inTimeline),
		  mStack(inTimeline.mTracks),
		  mOptions(inOptions),
		  mMedia(inFinder, ioMedia, mResult.mNotes),
		  mRanges(mMedia, mResult.mNotes),
		  mLayouts(mMedia),
		  mContext{inOptions, &mStack, mMedia, mRanges, mLayouts, mResult,
			  [this](ItemView const& inItem, Scope const& inScope, SN::AudioChannelLayout const& inLayout)
			  { return MakeNestedSequences(mContext, inItem, inScope, inLayout); }}
	{
	}

	TimelineSequence Make()
	{
		CheckOptions();
		std::size_t const clips = CountClips(mStack.mChildren);
		mMedia.Reserve(clips);
		mResult.mClips.reserve(clips);
		mResult.mPlace = mStack.mPlace;
		mResult.mSampleRate = ChooseRate();
		mWhySilent = FindSilence(mStack);
		mLayout = ChooseLayout();
		mResult.mLayout = mLayout;
		mRange = mRanges.GetRange(mStack);
		mNeedsNesting =
			HasFades(mStack) || FindPan(mStack) || !GetSpeed(mStack).IsPlain() || IsMulticam(mStack);
		auto const description = mNeedsNesting ? MakeNested() : MakeDirectly();
		if (mOptions.mListener)
		{
			CheckCanListen(mLayout, mResult.mSampleRate);
			Sequence::HearWithTwoEars(*mOptions.mListener, *description);
			mResult.mLayout = description->mLayout;
		}
		mResult.mDescription = description;
		mResult.mWhySilent = FindWhySilent(mStack, mResult);
		TellGlobalStart();
		std::ranges::stable_sort(mResult.mMarkers, {}, &MarkerRow::mStart);
		std::ranges::stable_sort(mResult.mAngles, {}, &AngleRow::mFirstFrame);
		return std::move(mResult);
	}

private:
	void CheckOptions() const
	{
		CheckIsBuiltIn(mOptions.mStretchEngine);
		if (mOptions.mSampleRate && (*mOptions.mSampleRate < 1 || *mOptions.mSampleRate > 768000))
		{
			Refuse("a sample rate of " + std::to_string(*mOptions.mSampleRate) +
				   " Hz is out of range; use 1 to 768000");
		}
	}

	int ChooseRate()
	{
		if (mOptions.mSampleRate)
		{
			return *mOptions.mSampleRate;
		}
		RateCount count(mMedia);
		count.Add(mStack);
		return count.GetRate();
	}

	SN::AudioChannelLayout ChooseLayout()
	{
		if (mOptions.mLayout)
		{
			return *mOptions.mLayout;
		}
		if (auto const& layout = mStack.GetSettings().mLayout)
		{
			return *ParseLayout(*layout);
		}
		SN::AudioChannelLayout const width =
			mWhySilent.empty() ? mLayouts.GetWidth(mStack) : SN::AudioChannelLayout();
		if (mOptions.mListener && !FindField(width).empty())
		{
			return width;
		}
		return width.size() == 1 ? zorvmediatypes::CreateMonoChannelLayout()
								 : zorvmediatypes::CreateStereoChannelLayout();
	}

	// The stack's own range is a stretch of the sequence, and its levels are those of the master.
	std::shared_ptr<Sequence::Description> MakeDirectly()
	{
		int const rate = mResult.mSampleRate;
		Scope scope{Grid::MakeThrough(mRange.mStart, rate, mResult.mFirstFrame),
			TimeMap(mRange.mStart, Ratio(), Ratio(1)), {mRange.mStart, mRange.GetEnd()},
			{mRange.mStart, mRange.GetEnd()}, {}, 0, mWhySilent, {}, {}};
		mResult.mFrames = scope.mGrid.ToFrame(mRange.GetEnd()) - mResult.mFirstFrame;
		scope.mHearing = MakeProgrammeHearing();
		mResult.mHasLength = mRange.mLength > Ratio();
		AddStackMarkers();
		auto description = StackMaker(mContext, mStack, scope, mLayout).Make();
		CurveTiming const timing{mRange.mLength, scope.mGrid.ToTicks(mResult.mFirstFrame)};
		description->mMaster.mStages = MakeEffects(mContext, mStack, mLayout, timing);
		std::ranges::move(MakeFaders(mStack, timing), std::back_inserter(description->mMaster.mStages));
		return description;
	}

	// Makes the stack an item on a track, where only items have what the stack wants.
	std::shared_ptr<Sequence::Description> MakeNested()
	{
		mResult.mFrames = ToSamples(mRange.mLength, mResult.mSampleRate);
		Scope const scope = MakeProgrammeScope();
		mResult.mHasLength = mRange.mLength > Ratio();
		auto description = std::make_shared<Sequence::Description>();
		description->mLayout = mLayout;
		Sequence::Track track;
		track.mName = mStack.mName;
		track.mOrigin = mStack.mPlace;
		track.mLayout = mLayout;
		AddOnlyItem(mContext, mStack, scope, ItemMaker::LevelsOn::kItem, track);
		if (!track.mItems.empty())
		{
			description->mTracks.push_back(std::move(track));
		}
		return description;
	}

	Scope MakeProgrammeScope() const
	{
		TimeSpan const whole{Ratio(), mRange.mLength};
		return {Grid(mResult.mSampleRate, Ratio()), TimeMap(), whole, whole, {}, 0, mWhySilent,
			MakeProgrammeHearing(), {}};
	}

	std::shared_ptr<Hearing const> MakeProgrammeHearing() const
	{
		return std::make_shared<Hearing const>(std::vector{Passage{0, mResult.mFrames}});
	}

	void AddStackMarkers()
	{
		Scope const scope = MakeProgrammeScope();
		ItemMaker(mContext, scope, mLayout).AddMarkersOf(mStack);
	}

	void TellGlobalStart()
	{
		if (mTimeline.mGlobalStartTime)
		{
			mResult.mGlobalStart = ToSeconds(*mTimeline.mGlobalStartTime);
			mResult.mGlobalStartRate = mTimeline.mGlobalStartTime->mRate;
		}
	}

	Timeline const& mTimeline;
	Stack const& mStack;
	TimelineOptions const& mOptions;
	TimelineSequence mResult;
	ClipMediaTable mMedia;
	Ranges mRanges;
	Layouts mLayouts;
	MakerContext mContext;
	std::string mWhySilent;
	SN::AudioChannelLayout mLayout;
	ExactRange mRange;
	bool mNeedsNesting = false;
};

} // namespace

TimelineSequence MakeTimelineSequence(Timeline const& inTimeline, MediaFinder const& inFinder,
	FileMedia& ioMedia, TimelineOptions const& inOptions)
{
	return Maker(inTimeline, inFinder, ioMedia, inOptions).Make();
}

} // namespace SonaroHost::Otio
