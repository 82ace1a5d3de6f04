#include "RenderSequence.h"

#include "SonaroHost/OtioSequence/TimelineMaker.h"
#include "SonaroHost/OtioSequence/TimelineSequence.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <ostream>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace SonaroHost::Otio::RandomTimelineTest
{

namespace
{

constexpr int kRate = 48000;
constexpr std::int64_t kMediaFrames = 4800;

// Timelines of cuts and nesting, and, if wanted, of everything that has to fit with each other.
class RandomTimeline
{
public:
	RandomTimeline(unsigned inSeed, bool inHasAll)
		: mRandom(inSeed),
		  mHasAll(inHasAll)
	{
	}

	Timeline Make()
	{
		Timeline timeline;
		timeline.mTracks = MakeStack(0);
		return timeline;
	}

private:
	int Pick(int inLeast, int inMost) { return std::uniform_int_distribution(inLeast, inMost)(mRandom); }
	bool Flip(int inOdds) { return Pick(1, inOdds) == 1; }

	// Up to a 20th of a second, and never of a common unit.
	RationalTime MakeTime(int inLeastMilliseconds)
	{
		constexpr double kRates[] = {24.0, 23.976, 25.0, 29.97, 59.94, 1000.0, 44100.0, 48000.0, 96000.0};
		double const rate = kRates[Pick(0, 8)];
		return {std::floor(rate * Pick(inLeastMilliseconds, 50) / 1000.0) + (Flip(4) ? 0.25 : 0.0), rate};
	}

	void FinishItem(Item& ioItem, bool inNeedsRange)
	{
		if (inNeedsRange || Flip(2))
		{
			ioItem.mSourceRange = TimeRange{MakeTime(inNeedsRange ? 0 : -10), MakeTime(0)};
		}
		ioItem.mIsEnabled = !Flip(12);
		if (!mHasAll)
		{
			return;
		}
		if (Flip(5))
		{
			Effect warp;
			warp.mKind = Effect::Kind::kLinearTimeWarp;
			warp.mTimeScalar = Flip(2) ? -1.0 : Pick(-30, 30) / 8.0;
			warp.mKind = warp.mTimeScalar == 0.0 ? Effect::Kind::kFreezeFrame : warp.mKind;
			ioItem.mEffects.push_back(warp);
		}
		if (Flip(3))
		{
			auto settings = std::make_shared<MixSettings>();
			settings->mFadeIn = Fade{MakeTime(0), {}};
			settings->mFadeOut = Fade{MakeTime(0), FadeShape::kSCurve};
			ioItem.mSettings = settings;
		}
	}

	Clip MakeClip()
	{
		Clip clip;
		MediaReference media;
		media.mKind = MediaReference::Kind::kExternal;
		media.mTargetUrl = Flip(8) ? "none.wav" : "a.wav";
		clip.mMediaReferences.push_back(media);
		FinishItem(clip, true);
		return clip;
	}

	Track MakeTrack(int inDepth)
	{
		Track track;
		track.mKind = Flip(10) ? "Video" : "Audio";
		bool hasTransitionBefore = false;
		for (int count = Pick(0, 6); count > 0; --count)
		{
			if (mHasAll && !hasTransitionBefore && Flip(3))
			{
				Transition transition;
				transition.mInOffset = MakeTime(0);
				transition.mOutOffset = MakeTime(0);
				track.mChildren.push_back({transition});
				hasTransitionBefore = true;
				continue;
			}
			track.mChildren.push_back(MakeChild(inDepth));
			hasTransitionBefore = false;
		}
		FinishItem(track, false);
		return track;
	}

	Stack MakeStack(int inDepth)
	{
		Stack stack;
		for (int count = Pick(1, 3); count > 0; --count)
		{
			stack.mChildren.push_back(Flip(5) ? MakeChild(inDepth) : Composable{MakeTrack(inDepth)});
		}
		FinishItem(stack, false);
		return stack;
	}

	Composable MakeChild(int inDepth)
	{
		int const kind = Pick(0, inDepth < 3 ? 5 : 2);
		if (kind == 0)
		{
			Gap gap;
			FinishItem(gap, true);
			return {gap};
		}
		if (kind <= 3)
		{
			return {MakeClip()};
		}
		return kind == 4 ? Composable{MakeStack(inDepth + 1)} : Composable{MakeTrack(inDepth + 1)};
	}

	std::mt19937 mRandom;
	bool mHasAll;
};

// Cuts and nesting, sample by sample: every boundary is added up to an absolute time and rounded there.
class Naive
{
public:
	std::vector<double> Render(Stack const& inStack)
	{
		Ratio const length = GetRange(inStack, &inStack.mChildren, nullptr).second;
		mOutput.assign(static_cast<std::size_t>(ToSamples(length, kRate)), 0.0);
		Place(inStack, Ratio(), {0, ToSamples(length, kRate)});
		return mOutput;
	}

private:
	using Window = std::pair<std::int64_t, std::int64_t>;
	using Children = std::vector<Composable>;

	static Children const* FindChildren(Composable const& inChild)
	{
		Track const* const track = inChild.As<Track>();
		Stack const* const stack = inChild.As<Stack>();
		return track ? &track->mChildren : (stack ? &stack->mChildren : nullptr);
	}

	// Start and length.
	static std::pair<Ratio, Ratio> GetRange(
		Item const& inItem, Children const* inChildren, Track const* inTrack)
	{
		if (inItem.mSourceRange)
		{
			return {ToSeconds(inItem.mSourceRange->mStartTime), ToSeconds(inItem.mSourceRange->mDuration)};
		}
		Ratio length;
		for (Composable const& child : *inChildren)
		{
			Ratio const part = GetRange(*child.AsItem(), FindChildren(child), child.As<Track>()).second;
			length = inTrack ? length + part : std::max(length, part);
		}
		return {Ratio(), length};
	}

	template <class T>
	void Place(T const& inItem, Ratio const& inStart, Window const& inWindow)
	{
		if constexpr (std::is_base_of_v<Item, T>)
		{
			PlaceItem(inItem, inStart, inWindow);
		}
	}

	template <class T>
	void PlaceItem(T const& inItem, Ratio const& inStart, Window const& inWindow)
	{
		Children const* children = nullptr;
		Track const* track = nullptr;
		if constexpr (std::is_same_v<T, Track>)
		{
			track = &inItem;
		}
		if constexpr (std::is_same_v<T, Track> || std::is_same_v<T, Stack>)
		{
			children = &inItem.mChildren;
		}
		auto const [first, length] = GetRange(inItem, children, track);
		Window const window{std::max(inWindow.first, ToSamples(inStart, kRate)),
			std::min(inWindow.second, ToSamples(inStart + length, kRate))};
		bool const isHeard = inItem.mIsEnabled && (!track || track->IsAudio());
		if (!isHeard)
		{
			return;
		}
		if constexpr (std::is_same_v<T, Clip>)
		{
			AddSamples(inItem, inStart, first, window);
		}
		Ratio time = inStart - first;
		for (std::size_t i = 0; children && i < children->size(); ++i)
		{
			Composable const& child = (*children)[i];
			std::visit([&](auto const& inChild) { Place(inChild, time, window); }, child.mValue);
			Ratio const part = GetRange(*child.AsItem(), FindChildren(child), child.As<Track>()).second;
			time = track ? time + part : time;
		}
	}

	void AddSamples(Clip const& inClip, Ratio const& inStart, Ratio const& inFirst, Window const& inWindow)
	{
		std::int64_t const shift = ToSamples(inFirst - inStart, kRate);
		for (std::int64_t frame = inWindow.first; frame < inWindow.second; ++frame)
		{
			std::int64_t const position = frame + shift;
			bool const isThere =
				position >= 0 && position < kMediaFrames && inClip.mMediaReferences[0].mTargetUrl == "a.wav";
			mOutput[static_cast<std::size_t>(frame)] +=
				isThere ? static_cast<double>(position + 1) / 32768.0 : 0.0;
		}
	}

	std::vector<double> mOutput;
};

TimelineSequence MakeSequence(Timeline const& inTimeline, FileMedia& ioMedia)
{
	TimelineOptions options;
	options.mSampleRate = kRate;
	return MakeTimelineSequence(
		inTimeline, MediaFinder(std::filesystem::path(SONARO_CONFORMANCE) / "otio/media"), ioMedia, options);
}

TEST(RandomTimelines, CutsAndNestingSoundAsAddedUpOneByOne)
{
	std::size_t heard = 0;
	for (unsigned seed = 1; seed <= 300; ++seed)
	{
		SCOPED_TRACE("seed " + std::to_string(seed));
		Timeline timeline = RandomTimeline(seed, false).Make();
		timeline.mTracks.mIsEnabled = true;
		FileMedia media;
		TimelineSequence const sequence = MakeSequence(timeline, media);
		std::vector<double> const expected = Naive().Render(timeline.mTracks);
		std::vector<float> const actual = RenderSequence(sequence, 64 + seed).front();
		ASSERT_EQ(actual.size(), expected.size());
		for (std::size_t frame = 0; frame < expected.size(); ++frame)
		{
			ASSERT_NEAR(static_cast<double>(actual[frame]), expected[frame], 1.0e-6) << "at " << frame;
			heard += expected[frame] != 0.0 ? 1 : 0;
		}
	}
	EXPECT_GT(heard, 100000u);
}

// One item at any speed between two clips, with transitions to both, and a stack with a clip at a speed of its own
// as that item. What is heard is worked out from the rule alone: a range from s on of length d plays from s to s + k d,
// or, at k below 0, from s + |k| d back to s, the last sample first.
class SpeedTrial
{
public:
	explicit SpeedTrial(unsigned inSeed)
		: mRandom(inSeed)
	{
		mOuter = {PickSpeed(), 0, 8 * Pick(40, 60)};
		mIsNest = Pick(0, 1) == 1;
		mInner = {mIsNest ? PickSpeed() : 1.0, 0, 0};
		mBefore = Pick(0, 1) * 8 * Pick(1, 10);
		mAfter = Pick(0, 1) * 8 * Pick(1, 10);
		// As much as the transitions borrow, and half of the longest filter, lies on both sides.
		std::int64_t const passed = GetPassed(mOuter);
		auto const margin = static_cast<std::int64_t>(std::abs(mOuter.mFactor) * 80.0) + 384;
		mOuter.mStart = margin + 8 * Pick(0, 10);
		if (mIsNest)
		{
			mInner.mFrames = (mOuter.mStart + passed + margin + 7) / 8 * 8;
			mInner.mStart = 384 + 8 * Pick(0, 10);
			// A gap stands before the clip; it is passed over.
			mGap = Pick(0, 1) * (mOuter.mStart - margin);
		}
		// Only what is resampled starts between two samples, and in a nest only if all in it does.
		bool const isResampled = std::abs(mInner.mFactor) != 1.0;
		mInner.mFraction = mIsNest && isResampled ? 0.25 * Pick(0, 3) : 0.0;
		mOuter.mFraction =
			std::abs(mOuter.mFactor) != 1.0 && isResampled == mIsNest ? 0.25 * Pick(0, 3) : 0.0;
	}

	bool Fits() const
	{
		Stretch const& lowest = mIsNest ? mInner : mOuter;
		return lowest.mStart + GetPassed(lowest) + 400 < kMediaFrames;
	}

	Timeline MakeTimeline() const
	{
		Composable middle{MakeClip("a.wav", mIsNest ? mInner : mOuter)};
		if (mIsNest)
		{
			Track track;
			track.mKind = "Audio";
			Gap gap;
			gap.mSourceRange = TimeRange{{0.0, double{kRate}}, {static_cast<double>(mGap), double{kRate}}};
			track.mChildren = {Composable{gap}, middle};
			Stack stack;
			stack.mChildren = {Composable{track}};
			Cut(stack, mOuter);
			middle = Composable{stack};
		}
		Track track;
		track.mKind = "Audio";
		track.mChildren.push_back({MakeClip("b.wav", {1.0, 500, kSideFrames})});
		AddTransition(mBefore, 0, track);
		track.mChildren.push_back(middle);
		AddTransition(0, mAfter, track);
		track.mChildren.push_back({MakeClip("b.wav", {1.0, 1500, kSideFrames})});
		Timeline timeline;
		timeline.mTracks.mChildren.push_back({track});
		return timeline;
	}

	// In 32768ths.
	double GetSample(std::int64_t inFrame) const
	{
		std::int64_t const frame = inFrame - kSideFrames;
		std::int64_t const end = mOuter.mFrames;
		double const middle = GetMiddle(static_cast<double>(frame));
		auto const mixed = [](double inOut, double inIn, double inProgress)
		{ return inOut * (1.0 - inProgress) + inIn * inProgress; };
		double const left = static_cast<double>(10001 + 500 + inFrame);
		double const right = static_cast<double>(10001 + 1500 + frame - end);
		auto const at = static_cast<double>(frame);
		if (frame < -mBefore || frame >= end + mAfter)
		{
			return frame < 0 ? left : right;
		}
		return frame < 0
				   ? mixed(left, middle, (at + static_cast<double>(mBefore)) / static_cast<double>(mBefore))
			   : frame >= end
				   ? mixed(middle, right, (at - static_cast<double>(end)) / static_cast<double>(mAfter))
				   : middle;
	}

	std::int64_t GetFrames() const { return 2 * kSideFrames + mOuter.mFrames; }
	bool IsBackwards() const { return mOuter.mFactor < 0.0 || mInner.mFactor < 0.0; }

	friend std::ostream& operator<<(std::ostream& ioStream, SpeedTrial const& inTrial)
	{
		return ioStream << "speeds " << inTrial.mOuter.mFactor << " and " << inTrial.mInner.mFactor << ", "
						<< inTrial.mOuter.mFrames << " frames from " << inTrial.mOuter.mStart
						<< " on, fractions " << inTrial.mOuter.mFraction << " and "
						<< inTrial.mInner.mFraction << ", transitions " << inTrial.mBefore << " and "
						<< inTrial.mAfter << ", gap " << inTrial.mGap;
	}

private:
	struct Stretch
	{
		double mFactor;
		std::int64_t mStart;
		std::int64_t mFrames;
		// Of a sample, by which it starts later.
		double mFraction = 0.0;
	};

	static constexpr std::int64_t kSideFrames = 200;

	int Pick(int inLeast, int inMost) { return std::uniform_int_distribution(inLeast, inMost)(mRandom); }
	double PickSpeed()
	{
		int const eighths = Pick(2, 20);
		return (Pick(1, 4) == 1 ? 8 : eighths) * (Pick(1, 3) > 1 ? -0.125 : 0.125);
	}

	static std::int64_t GetPassed(Stretch const& inStretch)
	{
		return static_cast<std::int64_t>(
			std::abs(inStretch.mFactor) * static_cast<double>(inStretch.mFrames));
	}

	static double GetPlace(Stretch const& inStretch, double inFrame)
	{
		auto const first = static_cast<double>(
			inStretch.mFactor < 0.0 ? inStretch.mStart + GetPassed(inStretch) - 1 : inStretch.mStart);
		return first + inStretch.mFraction + inStretch.mFactor * inFrame;
	}

	double GetMiddle(double inFrame) const
	{
		double const place = GetPlace(mOuter, inFrame);
		return 1.0 + (mIsNest ? GetPlace(mInner, place - static_cast<double>(mGap)) : place);
	}

	static void Cut(Item& ioItem, Stretch const& inStretch)
	{
		ioItem.mSourceRange =
			TimeRange{{static_cast<double>(inStretch.mStart) + inStretch.mFraction, double{kRate}},
				{static_cast<double>(inStretch.mFrames), double{kRate}}};
		Effect warp;
		warp.mKind = Effect::Kind::kLinearTimeWarp;
		// Two that multiply.
		for (double const factor : {inStretch.mFactor * 2.0, 0.5})
		{
			warp.mTimeScalar = factor;
			ioItem.mEffects.push_back(warp);
		}
	}

	static Clip MakeClip(char const* inMedia, Stretch const& inStretch)
	{
		Clip clip;
		MediaReference media;
		media.mKind = MediaReference::Kind::kExternal;
		media.mTargetUrl = inMedia;
		clip.mMediaReferences.push_back(media);
		Cut(clip, inStretch);
		return clip;
	}

	static void AddTransition(std::int64_t inBefore, std::int64_t inAfter, Track& ioTrack)
	{
		auto settings = std::make_shared<MixSettings>();
		settings->mShape = FadeShape::kLinear;
		Transition transition;
		transition.mInOffset = {static_cast<double>(inBefore), double{kRate}};
		transition.mOutOffset = {static_cast<double>(inAfter), double{kRate}};
		transition.mSettings = settings;
		ioTrack.mChildren.push_back({transition});
	}

	std::mt19937 mRandom;
	Stretch mOuter{};
	Stretch mInner{};
	bool mIsNest = false;
	std::int64_t mGap = 0;
	std::int64_t mBefore = 0;
	std::int64_t mAfter = 0;
};

TEST(RandomTimelines, SpeedsOfEitherSignPlayTheirStretch)
{
	unsigned backwards = 0;
	for (unsigned seed = 1; seed <= 200; ++seed)
	{
		SpeedTrial const trial(seed);
		if (!trial.Fits())
		{
			continue;
		}
		SCOPED_TRACE(testing::Message() << "seed " << seed << ": " << trial);
		FileMedia media;
		TimelineSequence const sequence = MakeSequence(trial.MakeTimeline(), media);
		ASSERT_FALSE(HasGuesses(sequence.mNotes)) << sequence.mNotes.back().mText;
		std::vector<float> const actual = RenderSequence(sequence, 512).front();
		ASSERT_EQ(std::ssize(actual), trial.GetFrames());
		for (std::int64_t frame = 0; frame < trial.GetFrames(); ++frame)
		{
			double const sample = 32768.0 * static_cast<double>(actual[static_cast<std::size_t>(frame)]);
			ASSERT_NEAR(sample, trial.GetSample(frame), 0.02) << "at " << frame;
		}
		backwards += trial.IsBackwards() ? 1 : 0;
	}
	EXPECT_GT(backwards, 60u);
}

// A view for each outermost track, in which it is heard alone.
std::vector<Sequence::GraphView> MakeStems(TimelineSequence const& inSequence)
{
	Sequence::GraphView none;
	for (TrackRow const& row : inSequence.mTracks)
	{
		if (row.mDepth == 0)
		{
			none.mLeftOut.insert(row.mPlace);
		}
	}
	std::vector<Sequence::GraphView> stems;
	for (std::string const& place : none.mLeftOut)
	{
		stems.push_back(none);
		stems.back().mLeftOut.erase(place);
	}
	return stems;
}

TEST(RandomTimelines, WhateverIsPutTogetherMakesAGraphWhoseStemsAddUp)
{
	for (unsigned seed = 1; seed <= 300; ++seed)
	{
		SCOPED_TRACE("seed " + std::to_string(seed));
		Timeline const timeline = RandomTimeline(seed, true).Make();
		FileMedia media;
		TimelineSequence const sequence = MakeSequence(timeline, media);
		std::vector<float> const mix = RenderSequence(sequence, 512).front();
		ASSERT_EQ(std::ssize(mix), sequence.mFrames);
		std::vector<float> sum(mix.size());
		std::vector<Sequence::GraphView> const stems =
			seed % 3 == 0 ? MakeStems(sequence) : std::vector<Sequence::GraphView>();
		for (Sequence::GraphView const& view : stems)
		{
			std::vector<float> const stem = RenderSequence(sequence, 512, view).front();
			ASSERT_EQ(stem.size(), sum.size());
			std::transform(stem.begin(), stem.end(), sum.begin(), sum.begin(), std::plus<>());
		}
		for (std::size_t frame = 0; frame < mix.size(); ++frame)
		{
			// Fewer than 100 branches of less than 1/6.
			ASSERT_LT(std::abs(mix[frame]), 16.0f);
			ASSERT_TRUE(stems.empty() || std::abs(sum[frame] - mix[frame]) < 1.0e-5f) << "at " << frame;
		}
		for (ClipRow const& row : sequence.mClips)
		{
			ASSERT_LE(row.mFirstFrame, row.mEndFrame);
			ASSERT_GE(row.mFirstFrame, 0) << row.mReason;
			ASSERT_LE(row.mEndFrame, sequence.mFrames);
		}
	}
}

} // namespace

} // namespace SonaroHost::Otio::RandomTimelineTest
