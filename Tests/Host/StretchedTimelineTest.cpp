// Clips of timelines that keep their pitch at other speeds.

#include "SonaroHost/Media/UsedRegions.h"
#include "TimelineClipRenders.h"

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace SonaroHost::Testing::StretchedTimelineTest
{

using testing::ElementsAre;
using testing::HasSubstr;

constexpr double kRate = 48000.0;
constexpr double kSpeed = 1.25;
constexpr double kStart = 1.0;
constexpr double kSeconds = 4.0;

Json Warp(Json inItem, double inSpeed, Json const& inKeepsPitch = true)
{
	Json const warp{{"OTIO_SCHEMA", "LinearTimeWarp.1"}, {"time_scalar", inSpeed},
		{"metadata", {{"sonaro", {{"keep_pitch", inKeepsPitch}}}}}};
	return With(std::move(inItem), {{"effects", List({warp})}});
}

class StretchedTimelineTest : public TimelineClipRenders
{
protected:
	// What the renders of sound files make of it.
	Sound RenderFile(double inSpeed, double inSemitones)
	{
		ClipRenderRequest request = ClipRenders::MakeRequest();
		request.mSpeed = inSpeed;
		request.mKeepsPitch = true;
		request.mSemitones = inSemitones;
		return ClipRenders::Render(request);
	}
};

// A second of the clip's own is a whole number of samples of both.
Json MakeClip(std::int64_t inFirst, std::int64_t inFrames)
{
	return Warp(Clip("cut", "in.wav", kStart + kSpeed * static_cast<double>(inFirst) / kRate,
					static_cast<double>(inFrames) / kRate),
		kSpeed);
}

TEST_F(StretchedTimelineTest, CutsAreTheUncutClipToTheBit)
{
	std::mt19937 random(16);
	constexpr auto kFrames = static_cast<std::int64_t>(kSeconds * kRate);
	for (int const rate : {48000, 44100})
	{
		SCOPED_TRACE(rate);
		WriteInput(MakeSound(2, rate, rate * 8));
		Sound const uncut = Render(MakeRequest(Timeline({Track("A", {MakeClip(0, kFrames)})})));
		ASSERT_EQ(uncut.GetFrames(), kFrames);
		std::vector<std::int64_t> cuts{0, kFrames};
		for (int i = 0; i < 20; ++i)
		{
			cuts.push_back(std::uniform_int_distribution<std::int64_t>(1, kFrames - 1)(random));
		}
		std::ranges::sort(cuts);
		Json track = Track("A", {});
		for (std::size_t i = 1; i < cuts.size(); ++i)
		{
			track["children"].push_back(MakeClip(cuts[i - 1], cuts[i] - cuts[i - 1]));
		}
		auto request = MakeRequest(Timeline({track}));
		for (unsigned const jobs : {1u, 2u, 3u})
		{
			request.mJobs = jobs;
			EXPECT_TRUE(SameBits(Render(request), uncut)) << jobs << " jobs";
		}
		request.mRange = "1.5..2.5";
		request.mBlockFrames = 1000;
		EXPECT_TRUE(SameBits(Render(request), uncut.Cut(72000, 48000)));
		EXPECT_THAT(mIgnored, testing::IsEmpty());
	}
}

TEST_F(StretchedTimelineTest, ClipsSoundLikeTheirFiles)
{
	WriteInput(MakeSound(2, 48000, 240000));
	struct Case
	{
		double mSpeed;
		double mSemitones;
	};
	for (Case const& test : {Case{1.25, 0.0}, Case{0.8, 0.0}, Case{1.0, 5.0}, Case{1.6, -3.0}})
	{
		SCOPED_TRACE(testing::Message() << test.mSpeed << ", " << test.mSemitones << " semitones");
		Json const clip = WithSettings(Clip("clip", "in.wav", 0.0, 2.0), {{"pitch", test.mSemitones}});
		Sound const expected = RenderFile(test.mSpeed, test.mSemitones);
		Sound const forward = Render(MakeRequest(Timeline({Track("A", {Warp(clip, test.mSpeed)})})));
		EXPECT_TRUE(SameBits(forward, expected.Cut(0, 96000)));
		ASSERT_EQ(mClips.size(), 1u);
		EXPECT_EQ(mClips[0].mKeepsPitch, test.mSpeed != 1.0);
		EXPECT_EQ(mClips[0].mSemitones, test.mSemitones);
		EXPECT_EQ(mClips[0].mEndMediaSample, std::llround(96000 * test.mSpeed));
		EXPECT_TRUE(SameBits(
			Render(MakeRequest(Timeline({Track("A", {Warp(clip, -test.mSpeed)})}))), forward.Reversed()));
	}
}

// The option holds where a time warp says nothing.
TEST_F(StretchedTimelineTest, TimeWarpsGoBeforeTheOption)
{
	WriteInput(MakeSound(1, 48000, 96000));
	for (Json const& keeps : {Json(true), Json(false), Json(nullptr)})
	{
		for (bool const option : {false, true})
		{
			SCOPED_TRACE(testing::Message() << keeps.dump() << ", option " << option);
			auto request =
				MakeRequest(Timeline({Track("A", {Warp(Clip("clip", "in.wav", 0.0, 0.5), 2.0, keeps)})}));
			request.mOptions.mKeepsPitch = option;
			Render(request);
			ASSERT_EQ(mClips.size(), 1u);
			EXPECT_EQ(mClips[0].mKeepsPitch, keeps.is_null() ? option : keeps.get<bool>());
		}
	}
}

TEST_F(StretchedTimelineTest, WhatCannotKeepItsPitchSaysSo)
{
	WriteInput(MakeSound(1, 48000, 96000));
	Json const clip = Clip("clip", "in.wav", 0.0, 0.1);
	Render(MakeRequest(Timeline({Track("A", {Warp(clip, 12.0), Warp(Stack({clip}), 2.0)})})));
	EXPECT_THAT(
		mIgnored, ElementsAre(HasSubstr("/tracks/children/0/children/0: a speed of 12 cannot keep its pitch"),
					  HasSubstr("/tracks/children/0/children/1: only clips can keep their pitch")));
}

TEST_F(StretchedTimelineTest, WhatIsFarApartInAFileIsStretchedByItself)
{
	WriteInput(MakeSound(1, 8000, 8000 * 60));
	Json const late = Warp(Clip("late", "in.wav", 50.0, 2.0), kSpeed);
	Json const early = Warp(Clip("early", "in.wav", 10.0, 2.0), kSpeed);
	auto const render = [this](Json const& inTrack, unsigned inJobs)
	{
		auto request = MakeRequest(Timeline({inTrack}));
		request.mOptions.mSampleRate = 8000;
		request.mJobs = inJobs;
		return Render(request);
	};
	Sound const alone = render(Track("A", {late}), 1);
	for (unsigned const jobs : {1u, 3u})
	{
		EXPECT_TRUE(SameBits(render(Track("A", {late, early}), jobs).Cut(0, 16000), alone));
		// What lies between them joins them: then the sound of the late one has a longer past.
		Json const between = Warp(Clip("between", "in.wav", 12.0, 30.0), kSpeed);
		EXPECT_FALSE(SameBits(render(Track("A", {late, early, between}), jobs).Cut(0, 16000), alone));
		EXPECT_EQ(render(Track("A", {early, between, late}), jobs).GetFrames(), 34 * 8000);
	}
}

TEST(UsedRegionsTest, SpansThatAreNearAreOneRegion)
{
	UsedRegions used(10);
	for (UsedRegions::Span const& span : {UsedRegions::Span{100, 120}, {0, 5}, {131, 140}, {16, 20}})
	{
		used.Add(span);
	}
	auto const find = [&used](std::int64_t inFrame)
	{
		UsedRegions::Span const& span = used.Find(inFrame);
		return std::pair(span.mFirst, span.mEnd);
	};
	EXPECT_EQ(find(4), std::pair(std::int64_t{0}, std::int64_t{5}));
	EXPECT_EQ(find(17), std::pair(std::int64_t{16}, std::int64_t{20}));
	EXPECT_EQ(find(119), std::pair(std::int64_t{100}, std::int64_t{120}));
	used.Add({121, 122});
	EXPECT_EQ(find(139), std::pair(std::int64_t{100}, std::int64_t{140}));
	used.Add({15, 95});
	EXPECT_EQ(find(139), std::pair(std::int64_t{0}, std::int64_t{140}));
}

} // namespace SonaroHost::Testing::StretchedTimelineTest
