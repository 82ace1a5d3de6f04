// Clips and nested sequences of timelines whose speed changes.

#include "Host/TimelineClipRenders.h"
#include "zorvaudiodsp/stretch/omega/OmegaEngine.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <numbers>
#include <random>
#include <string>
#include <vector>

namespace SonaroHost::Testing::RampedTimelineTest
{

using testing::ElementsAre;
using testing::HasSubstr;

constexpr double kRate = 48000.0;
constexpr double kToneHertz = 1000.0;

Json Key(double inTime, double inValue, char const* inInterpolation = "linear")
{
	return {{"time", inTime}, {"value", inValue}, {"interpolation", inInterpolation}};
}

Json Ramped(Json inItem, std::initializer_list<Json> inKeys)
{
	return WithSettings(std::move(inItem), {{"speed", {{"keyframes", List(inKeys)}}}});
}

Json Warp(Json inItem, double inSpeed)
{
	Json const warp{{"OTIO_SCHEMA", "LinearTimeWarp.1"}, {"time_scalar", inSpeed}};
	return With(std::move(inItem), {{"effects", List({warp})}});
}

Sound MakeTone(double inSeconds, int inSampleRate = 48000)
{
	Sound tone{1, inSampleRate, {}};
	for (int i = 0; i < inSeconds * inSampleRate; ++i)
	{
		tone.mSamples.push_back(
			static_cast<float>(0.5 * std::sin(2.0 * std::numbers::pi * kToneHertz * i / inSampleRate)));
	}
	return tone;
}

class RampedTimelineTest : public TimelineClipRenders
{
protected:
	using TimelineClipRenders::Render;
	Sound Render(Json const& inItem) { return Render(MakeRequest(Timeline({Track("A", {inItem})}))); }

	// Expects a tone whose places are given in seconds of the file.
	static void ExpectTone(
		Sound const& inSound, std::function<double(double)> const& inPlace, double inTolerance)
	{
		// The ends of the file are not a tone.
		for (std::int64_t i = 500; i < inSound.GetFrames() - 500; ++i)
		{
			double const expected =
				0.5 * std::sin(2.0 * std::numbers::pi * kToneHertz * inPlace(static_cast<double>(i) / kRate));
			ASSERT_NEAR(
				static_cast<double>(inSound.mSamples[static_cast<std::size_t>(i)]), expected, inTolerance)
				<< "at " << i;
		}
	}
};

TEST_F(RampedTimelineTest, TonesHaveTheFrequencyOfTheMomentarySpeed)
{
	for (int const rate : {48000, 44100})
	{
		WriteInput(MakeTone(20.0, rate));
		SCOPED_TRACE(rate);
		Json const clip = Clip("clip", "in.wav", 1.0, 4.0);
		ExpectTone(
			Render(Ramped(clip, {Key(0.0, -2.0), Key(4.0, 2.0)})),
			[](double t) { return 3.0 - 2.0 * t + t * t / 2.0; }, 1.0e-6);
		ExpectTone(
			Render(Ramped(clip, {Key(0.0, 1.0), Key(4.0, 2.0)})),
			[](double t) { return 1.0 + t + t * t / 8.0; }, 1.0e-6);
		// Times a time warp's factor, up to a key and from another one on.
		ExpectTone(
			Render(Warp(Ramped(clip, {Key(1.0, 0.5, "smooth"), Key(3.0, 1.0)}), 2.0)),
			[](double t)
			{
				double const u = std::clamp((t - 1.0) / 2.0, 0.0, 1.0);
				return 1.0 + std::min(t, 1.0) + 2.0 * (u + u * u * u - u * u * u * u / 2.0) +
					   2.0 * std::max(t - 3.0, 0.0);
			},
			1.0e-6);
		// Back again: nothing before the start of the range is heard.
		ExpectTone(
			Render(Ramped(clip, {Key(0.0, 2.0), Key(4.0, -2.0)})),
			[](double t) { return 1.0 + 2.0 * t - t * t / 2.0; }, 1.0e-6);
		EXPECT_THAT(mNotes, ElementsAre(HasSubstr("from 0:01.000 to 0:03.000, in reverse below 0")));
		ExpectTone(
			Render(Ramped(clip, {Key(0.0, -1.0), Key(4.0, -2.0)})),
			[](double t) { return 7.0 - t - t * t / 8.0; },
			1.0e-6 + 2.0 * std::numbers::pi * kToneHertz / rate);
	}
}

TEST_F(RampedTimelineTest, AnyCutNestAndDirectionGiveTheSameBits)
{
	WriteInput(MakeSound(2, 44100, 44100 * 12));
	std::initializer_list<Json> const keys = {Key(0.0, 0.5, "smooth"), Key(2.0, 3.0), Key(4.0, -1.0)};
	Json const clip = Ramped(Clip("clip", "in.wav", 2.0, 4.0), keys);
	auto request = MakeRequest(Timeline({Track("A", {clip})}));
	Sound const whole = Render(request);
	ASSERT_EQ(whole.GetFrames(), 4 * 48000);
	for (unsigned const block : {64u, 333u})
	{
		request.mBlockFrames = block;
		for (unsigned const jobs : {1u, 2u, 3u})
		{
			request.mJobs = jobs;
			EXPECT_TRUE(SameBits(Render(request), whole)) << jobs << " jobs, blocks of " << block;
		}
	}
	request.mRange = "1.1..3.3";
	EXPECT_TRUE(SameBits(Render(request), whole.Cut(52800, 105600)));
	EXPECT_TRUE(SameBits(Render(Warp(Stack({clip}), -1.0)), whole.Reversed()));

	WriteInput(MakeSound(2, 48000, 48000 * 12));
	Json const content = Stack({Clip("clip", "in.wav", 0.0, 12.0)});
	Json const nest = Ramped(With(content, {{"source_range", Range(2.0, 4.0)}}), keys);
	Sound const same = Render(clip);
	EXPECT_TRUE(SameBits(Render(nest), same));
	request = MakeRequest(Timeline({Track("A", {nest})}));
	request.mRange = "2.2..3.9";
	request.mJobs = 2;
	EXPECT_TRUE(SameBits(Render(request), same.Cut(105600, 81600)));
}

TEST_F(RampedTimelineTest, PiecesOfARampJoin)
{
	WriteInput(MakeTone(8.0));
	Sound const whole = Render(Ramped(Clip("clip", "in.wav", 0.0, 4.0), {Key(0.0, 1.0), Key(4.0, 2.0)}));
	Json track = Track("A", {});
	double const starts[] = {0.0, 1.125, 2.5, 4.125};
	for (int i = 0; i < 4; ++i)
	{
		Json clip = Clip("piece", "in.wav", 0.0, 1.0);
		clip["source_range"]["start_time"] = {
			{"OTIO_SCHEMA", "RationalTime.1"}, {"value", starts[i] * 48000.0}, {"rate", 48000.0}};
		track["children"].push_back(Ramped(clip, {Key(0.0, 1.0 + i / 4.0), Key(1.0, 1.25 + i / 4.0)}));
	}
	Sound const pieces = Render(MakeRequest(Timeline({track})));
	ASSERT_EQ(pieces.GetFrames(), whole.GetFrames());
	for (std::size_t i = 0; i < whole.mSamples.size(); ++i)
	{
		ASSERT_NEAR(pieces.mSamples[i], whole.mSamples[i], 1.0e-6f) << i;
	}
}

TEST_F(RampedTimelineTest, OneSpeedIsATimeWarp)
{
	WriteInput(MakeSound(2, 48000, 48000 * 8));
	Json const clip = Clip("clip", "in.wav", 1.0, 2.0);
	for (double const speed : {1.5, -0.75})
	{
		Sound const expected = Render(Warp(clip, speed));
		EXPECT_TRUE(SameBits(Render(WithSettings(clip, {{"speed", speed}})), expected));
		EXPECT_TRUE(SameBits(Render(Ramped(clip, {Key(0.0, speed), Key(1.0, speed, "smooth")})), expected));
	}
}

TEST_F(RampedTimelineTest, ReverseRampsBeginWithTheSampleBeforeTheEnd)
{
	Sound steps{1, 48000, {}};
	for (int i = 0; i < 3 * 48000; ++i)
	{
		steps.mSamples.push_back(static_cast<float>(i) / 262144.0f);
	}
	WriteInput(steps);
	Json const clip = Clip("clip", "in.wav", 1.0, 1.0);
	Sound const warped = Render(Warp(clip, -1.0));
	EXPECT_EQ(warped.mSamples.front(), 95999.0f / 262144.0f);
	Sound const ramp = Render(Ramped(clip, {Key(0.0, -1.0), Key(1.0, -1.0000001)}));
	for (std::size_t i = 0; i < 48000; ++i)
	{
		ASSERT_NEAR(ramp.mSamples[i], warped.mSamples[i], 1.0e-6f) << i;
	}
	auto const& moments = mClips.at(0).mRamp->mMoments;
	ASSERT_EQ(moments.size(), 1u) << "second 2 is not played";
	EXPECT_EQ(moments[0].mSecond, 1);
	EXPECT_EQ(moments[0].mFrame, 47999);
	Render(Ramped(clip, {Key(0.0, 0.5), Key(1.0, 1.5)}));
	EXPECT_EQ(mClips.at(0).mRamp->mMoments.size(), 1u) << "second 2 is the end";
}

TEST_F(RampedTimelineTest, AThousandTurnsAreRendered)
{
	WriteInput(MakeTone(4.0));
	Json keys = Json::array();
	for (int i = 0; i < 1000; ++i)
	{
		keys.push_back(Key(i * 0.002, 1.0 - 2.0 * (i % 2)));
	}
	Json const clip = WithSettings(Clip("clip", "in.wav", 1.0, 1.998), {{"speed", {{"keyframes", keys}}}});
	ExpectTone(
		Render(clip),
		[](double t)
		{
			double const x = std::fmod(t, 0.004);
			return x < 0.002 ? 1.0005 + x - x * x / 0.002
							 : 1.0005 - (x - 0.002) + (x - 0.002) * (x - 0.002) / 0.002;
		},
		1.0e-5);
}

// The seconds of a file that reports say are heard, and the frames at which clicks at these seconds are.
TEST_F(RampedTimelineTest, SecondsAreHeardWhereTheReportSays)
{
	constexpr int kSeconds = 20;
	Sound clicks{1, 48000, std::vector<float>(48000 * kSeconds)};
	for (std::size_t second = 0; second < kSeconds; ++second)
	{
		for (std::size_t i = 0; i < 24; ++i)
		{
			clicks.mSamples[second * 48000 + i] = i % 2 == 0 ? 0.5f : -0.5f;
		}
	}
	WriteInput(clicks);
	struct Case
	{
		char const* mName;
		Json mClip;
		// How far a click may lie from the frame, its length and the filter's ringing among it.
		std::int64_t mTolerance;
	};
	auto const keep = [](Json inItem)
	{
		inItem["metadata"]["sonaro"]["keep_pitch"] = true;
		return inItem;
	};
	Json const clip = Clip("clip", "in.wav", 1.48, 4.0);
	Json const up = Ramped(clip, {Key(0.5, 0.5), Key(4.0, 2.0)});
	Json const back = Ramped(clip, {Key(0.0, 1.5), Key(4.0, -2.0)});
	Json const reversed = Ramped(clip, {Key(0.0, -2.0, "smooth"), Key(2.0, -0.5, "hold"), Key(3.0, -1.2)});
	Json nest = Stack({up});
	nest["source_range"] = Range(0.4, 3.0);
	Case const kCases[] = {{"following", up, 100}, {"there and back", back, 100}, {"reversed", reversed, 100},
		{"in a nest", Warp(nest, 1.25), 100}, {"kept", keep(up), 240},
		{"kept, reversed", keep(reversed), 240}, {"kept, with a warp", keep(Warp(up, 1.5)), 240}};
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(test.mName);
		Sound const output = Render(test.mClip);
		ASSERT_EQ(mClips.size(), 1u);
		ASSERT_TRUE(mClips[0].mRamp);
		EXPECT_EQ(mClips[0].mKeepsPitch, test.mTolerance > 100);
		std::vector<Otio::RampRow::Moment> const& moments = mClips[0].mRamp->mMoments;
		EXPECT_GE(moments.size(), 3u);
		std::size_t found = 0;
		for (std::int64_t i = 0; i < output.GetFrames(); ++i)
		{
			if (std::abs(output.mSamples[static_cast<std::size_t>(i)]) < 0.1f)
			{
				continue;
			}
			ASSERT_LT(found, moments.size()) << i;
			EXPECT_NEAR(static_cast<double>(i), static_cast<double>(moments[found].mFrame),
				static_cast<double>(test.mTolerance))
				<< "second " << moments[found].mSecond;
			++found;
			i += 1000;
		}
		EXPECT_EQ(found, moments.size());
	}
	EXPECT_EQ(mClips[0].mRamp->mExactSeconds, "111/16");
}

TEST_F(RampedTimelineTest, KeptPitchStaysAndAnyCutGivesTheSameBits)
{
	std::vector<StretchEngine> engines{StretchEngine::kScaler, StretchEngine::kOmega};
	if (IsOmegaEngineKindBuiltIn(dsp::stretch::omega::OmegaEngineKind::kRubberBand))
	{
		engines.push_back(StretchEngine::kRubberBand);
	}
	for (StretchEngine const engine : engines)
	{
		SCOPED_TRACE(static_cast<int>(engine));
		WriteInput(MakeTone(20.0));
		Json clip = Ramped(Clip("clip", "in.wav", 1.0, 6.0), {Key(0.0, 0.5, "smooth"), Key(6.0, 2.0)});
		clip["metadata"]["sonaro"].update(Json{{"keep_pitch", true}, {"pitch", 12.0}});
		auto request = MakeRequest(Timeline({Track("A", {clip})}));
		request.mOptions.mStretchEngine = engine;
		Sound const tone = Render(request);
		// Each half second has as many periods as the tone at its pitch, an octave higher.
		for (int half = 1; half < 11; ++half)
		{
			int rises = 0;
			for (std::size_t i = 0; i < 24000; ++i)
			{
				std::size_t const at = static_cast<std::size_t>(half) * 24000 + i;
				rises += tone.mSamples[at - 1] < 0.0f && tone.mSamples[at] >= 0.0f ? 1 : 0;
			}
			EXPECT_NEAR(rises, kToneHertz, 10) << half;
		}
		WriteInput(MakeSound(2, 44100, 44100 * 12));
		Sound const whole = Render(request);
		for (unsigned const jobs : {2u, 3u})
		{
			request.mJobs = jobs;
			EXPECT_TRUE(SameBits(Render(request), whole)) << jobs << " jobs";
		}
		request.mRange = "1.5..4.25";
		request.mBlockFrames = 1000;
		EXPECT_TRUE(SameBits(Render(request), whole.Cut(72000, 132000)));
		auto const remarks =
			std::ranges::count_if(mNotes, [](auto const& inNote) { return inNote.starts_with("'scaler'"); });
		EXPECT_EQ(remarks, engine == StretchEngine::kScaler ? 1 : 0);
	}
}

TEST_F(RampedTimelineTest, WhatCannotKeepItsPitchFollowsAndSaysSo)
{
	WriteInput(MakeTone(4.0));
	Json clip = Ramped(Clip("clip", "in.wav", 0.0, 1.0), {Key(0.0, 1.0), Key(1.0, 0.05)});
	Sound const following = Render(clip);
	clip["metadata"]["sonaro"]["keep_pitch"] = true;
	EXPECT_TRUE(SameBits(Render(clip), following));
	EXPECT_THAT(mNotes, testing::Contains(HasSubstr("speeds from 0.05 to 1 cannot keep their pitch")));
	auto request =
		MakeRequest(Timeline({Track("A", {Ramped(Stack({clip}), {Key(0.0, 1.0), Key(1.0, 2.0)})})}));
	request.mOptions.mKeepsPitch = true;
	Render(request);
	EXPECT_THAT(mNotes, testing::Contains(HasSubstr("only clips can keep their pitch")));
}

TEST_F(RampedTimelineTest, BadSpeedsAreRefusedWithTheirPlace)
{
	WriteInput(MakeTone(1.0));
	struct Case
	{
		Json mSpeed;
		char const* mMessage;
	};
	Json many = Json::array();
	for (int i = 0; i < 1001; ++i)
	{
		many.push_back(Key(i, 1.0));
	}
	Case const kCases[] = {
		{{{"keyframes", Json::array()}},
			"speed/keyframes: expected an array of at least one keyframe, found an empty"},
		{{{"keyframes", List({Key(0.0, 1001.0)})}}, "speed/keyframes/0/value: "},
		{{{"keyframes", List({Key(0.0, 1.0, "cubic")})}},
			"speed/keyframes/0/interpolation: 'cubic' is not valid"},
		{{{"keyframes", many}}, "speed/keyframes: a speed has 1001 keyframes; use at most 1000"},
		{"fast", "speed: "},
	};
	for (Case const& test : kCases)
	{
		Json const clip = WithSettings(Clip("clip", "in.wav"), {{"speed", test.mSpeed}});
		EXPECT_THAT(GetRefusalOf([&] { Render(clip); }, HostError::Kind::kInput), HasSubstr(test.mMessage));
	}
}

} // namespace SonaroHost::Testing::RampedTimelineTest
