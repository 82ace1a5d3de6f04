// The reduction of noise in renders of sound files and of timelines.

#include "Host/ClipRenders.h"
#include "Host/Media.h"
#include "Host/ProgramRun.h"
#include "Host/TimelineJson.h"
#include "NoisySpeech.h"
#include "SonaroHost/Render/TimelineRenderJob.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <random>
#include <stop_token>
#include <string>
#include <thread>

namespace SonaroHost::Testing::DenoiseRenderTest
{

using testing::ElementsAre;
using testing::HasSubstr;

Json Denoised(Json inItem, Json const& inSettings = Json::object())
{
	Json const effect{{"OTIO_SCHEMA", "Effect.1"}, {"effect_name", Denoise::kUri},
		{"metadata", {{"sonaro", {{"denoise", inSettings}}}}}};
	return With(std::move(inItem), {{"effects", List({effect})}});
}

class DenoiseRenderTest : public ClipRenders
{
protected:
	ClipRenderRequest MakeRequest(std::string const& inInput = "in.wav") const
	{
		ClipRenderRequest request = ClipRenders::MakeRequest(inInput);
		request.mNoiseReduction.emplace();
		return request;
	}

	Otio::TimelineRenderRequest MakeRequest(Json const& inTimeline) const
	{
		WriteBytes(mFolder / "edit.otio", inTimeline.dump());
		Otio::TimelineRenderRequest request;
		request.mInput = mFolder / "edit.otio";
		request.mOutput = mFolder / "mix.wav";
		request.mOptions.mSampleRate = 48000;
		return request;
	}

	static Sound Render(Otio::TimelineRenderRequest const& inRequest)
	{
		EXPECT_TRUE(Otio::TimelineRenderJob(inRequest).Run());
		return ReadSound(inRequest.mOutput);
	}
	using ClipRenders::Render;
};

TEST_F(DenoiseRenderTest, TakesSteadyNoiseAndLeavesSpeech)
{
	NoisySpeech const speech(NoisySpeech::Noise::kDark, 44100, 6.0);
	WriteInput(speech.Mix());
	Sound const clean = Render(MakeRequest());
	EXPECT_GT(speech.MeasureReduction(clean), 12.0);
	EXPECT_NEAR(speech.MeasureSpeech(clean), 0.0, 1.0);
	ClipRenderRequest request = MakeRequest();
	request.mNoiseReduction->mReduction = 0.0;
	EXPECT_TRUE(SameBits(Render(request), ReadSound(mFolder / "in.wav")));
}

TEST_F(DenoiseRenderTest, AnyBlocksThreadsAndRangesGiveTheSameBits)
{
	struct Case
	{
		char const* mName;
		int mFormat;
		int mChannels;
	};
	constexpr std::int64_t kFrames = 150000;
	// Files that can be entered anywhere, and one that cannot.
	Case const cases[] = {{"wav", SF_FORMAT_WAV | SF_FORMAT_PCM_24, 6},
		{"flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 1}, {"vorbis", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 2}};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		WriteSound(mFolder / "in.wav", test.mFormat, MakeSound(test.mChannels, 48000, kFrames));
		ClipRenderRequest request = MakeRequest();
		request.mNoiseReduction->mLearn = {TimePosition::FromSamples(5000), TimePosition::FromSamples(60000)};
		Sound const whole = Render(request);
		request.mBlockFrames = 1000;
		request.mJobs = 3;
		EXPECT_TRUE(SameBits(Render(request), whole));
		request.mDirection = RenderDirection::kReverse;
		EXPECT_TRUE(SameBits(Render(request).Reversed(), whole));
		request.mDirection = RenderDirection::kForward;
		request.mInputs[0].mStart = TimePosition::FromSamples(83456);
		EXPECT_TRUE(SameBits(Render(request), whole.Cut(83456, kFrames - 83456)));
	}
}

TEST_F(DenoiseRenderTest, ComesBeforeSpeedAndPitch)
{
	WriteInput(MakeSound(2, 48000, 100000));
	ClipRenderRequest request = MakeRequest();
	WriteSound(mFolder / "clean.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, Render(request));
	for (bool const keepsPitch : {false, true})
	{
		request.mInputs[0].mPath = mFolder / "in.wav";
		request.mNoiseReduction.emplace();
		request.mSpeed = 1.25;
		request.mKeepsPitch = keepsPitch;
		request.mSampleRate = 44100;
		Sound const clean = Render(request);
		request.mInputs[0].mPath = mFolder / "clean.wav";
		request.mNoiseReduction.reset();
		EXPECT_TRUE(SameBits(Render(request), clean)) << keepsPitch;
	}
}

TEST_F(DenoiseRenderTest, WhatCannotBeLearnedFromIsRefused)
{
	WriteInput(Sound{1, 48000, std::vector<float>(48000)});
	auto const expect = [&](double inReduction, std::int64_t inFirst, std::int64_t inEnd,
							std::string const& inText, HostError::Kind inKind)
	{
		ClipRenderRequest request = MakeRequest();
		request.mNoiseReduction = {
			inReduction, {{TimePosition::FromSamples(inFirst), TimePosition::FromSamples(inEnd)}}};
		ExpectRefusal(request, inText, inKind);
	};
	expect(60.1, 0, 48000, "a reduction of 60.1 dB is out of range; use 0 to 60", HostError::Kind::kRequest);
	expect(-1.0, 0, 48000, "-1 dB is out of range", HostError::Kind::kRequest);
	expect(18.0, 0, 48001, "as the file has 0:01.000; choose a range within the file",
		HostError::Kind::kRequest);
	expect(18.0, 9600, 9600, "ends before it begins; choose an end after", HostError::Kind::kRequest);
	expect(18.0, 9600, 10000, "less than 2048 samples; choose a longer range", HostError::Kind::kRequest);
	expect(18.0, 0, 9600, "in.wav': there is only silence to learn the noise from; choose another range",
		HostError::Kind::kInput);
	EXPECT_THAT(mFolder.List(), ElementsAre("in.wav"));
	WriteInput(Sound{1, 48000, std::vector<float>(10)});
	expect(18.0, 0, 10, "it has 10 samples, and 2048 are needed; leave its noise as it is",
		HostError::Kind::kRequest);
	ClipRenderRequest request = MakeRequest();
	request.mInputs.push_back(request.mInputs.front());
	request.mNoiseReduction->mLearn.emplace();
	ExpectRefusal(request, "a single input only");
}

TEST_F(DenoiseRenderTest, ClipsAreCutsOfTheFileWithoutNoise)
{
	WriteInput(MakeSound(1, 48000, 48000 * 8));
	Json const settings{{"reduction", 12}, {"learn", {{"start", Time(0.4)}, {"end", 2.0}}}};
	ClipRenderRequest file = MakeRequest();
	file.mNoiseReduction = {
		12.0, {{TimePosition::FromSamples(48000 * 2 / 5), TimePosition::FromSamples(96000)}}};
	Sound const clean = Render(file);
	Json const timeline = Timeline(
		{Track("A", {Denoised(Clip("a", "in.wav", 1.0, 2.0), settings), Clip("b", "in.wav", 3.0, 1.0),
						Denoised(Clip("c", "in.wav", 4.0, 3.0), settings)})});
	auto request = MakeRequest(timeline);
	request.mOptions.mLayout = zorvmediatypes::CreateMonoChannelLayout();
	Otio::TimelineRenderJob job(request);
	ASSERT_TRUE(job.Run());
	auto const& rows = job.GetSequence().mClips;
	ASSERT_EQ(rows.size(), 3u);
	EXPECT_EQ(rows[0].mDenoise, (Denoise{12.0, Denoise::Span{19200, 96000}}));
	EXPECT_FALSE(rows[1].mDenoise);
	Sound const mix = ReadSound(request.mOutput);
	EXPECT_TRUE(SameBits(mix.Cut(0, 96000), clean.Cut(48000, 96000)));
	EXPECT_TRUE(SameBits(mix.Cut(96000, 48000), ReadSound(mFolder / "in.wav").Cut(48000 * 3, 48000)));
	EXPECT_TRUE(SameBits(mix.Cut(48000 * 3, 48000 * 3), clean.Cut(48000 * 4, 48000 * 3)));
	request.mRange = "4.5..5";
	EXPECT_TRUE(SameBits(Render(request), mix.Cut(216000, 24000)));
}

TEST_F(DenoiseRenderTest, SummariesHaveTheLevelThatWasLearned)
{
	// Noise of a fifth, in one of two channels, and louder in another part.
	constexpr std::size_t kFrames = 96000;
	Sound noise{2, 48000, std::vector<float>(2 * kFrames)};
	std::mt19937 random(5);
	std::normal_distribution<float> normal(0.0f, 0.2f);
	for (std::size_t i = 0; i < kFrames; ++i)
	{
		noise.mSamples[2 * i] = normal(random) * (i < kFrames / 2 ? 1.0f : 3.0f);
	}
	WriteInput(noise);
	ClipRenderRequest request = MakeRequest();
	request.mNoiseReduction = {
		12.0, {{TimePosition::FromSamples(0), TimePosition::FromSamples(kFrames / 2)}}};
	auto const render = [&request]() { return ClipRenderJob(request).Run().value().mLearnedNoise; };
	ASSERT_EQ(render().size(), 1u);
	EXPECT_NEAR(render()[0].mLevel.value(), 0.2, 0.01);
	request.mNoiseReduction->mLearn.reset();
	EXPECT_NEAR(render()[0].mLevel.value(), 0.2, 0.01);
	WriteInput(Sound{1, 48000, std::vector<float>(10, 0.5f)});
	EXPECT_FALSE(render()[0].mLevel);
	request.mNoiseReduction->mReduction = 0.0;
	EXPECT_TRUE(render().empty());
}

TEST_F(DenoiseRenderTest, TimelinesThatCannotBeMeant)
{
	WriteInput(MakeSound(1, 48000, 48000));
	auto const expectRefusal = [&](Json const& inTimeline, std::string const& inText)
	{
		EXPECT_THAT(
			GetRefusalOf([&] { Otio::TimelineRenderJob(MakeRequest(inTimeline)).Run(); }), HasSubstr(inText));
	};
	Json const clip = Clip("a", "in.wav");
	expectRefusal(Timeline({Denoised(Track("A", {clip}))}),
		"/tracks/children/0/effects/0/metadata/sonaro/denoise: is for clips only");
	expectRefusal(Timeline({Track("A", {Denoised(clip, {{"reduction", 61}})})}), "denoise/reduction");
	expectRefusal(Timeline({Track("A", {Denoised(clip, {{"learn", {{"start", 2}, {"end", 1}}}})})}),
		"denoise/learn: ends before it starts");
	expectRefusal(Timeline({Track("A", {Denoised(clip, {{"learn", {{"start", 2}}}})})}), "denoise/learn/end");
	// What the media do not have is known once they are found.
	auto const request =
		MakeRequest(Timeline({Track("A", {Denoised(clip, {{"learn", {{"start", 2}, {"end", 3}}}})})}));
	Otio::TimelineRenderJob job(request);
	ASSERT_TRUE(job.Run());
	ASSERT_EQ(job.GetNotes().size(), 1u);
	EXPECT_EQ(job.GetNotes()[0].mKind, Otio::Note::Kind::kMissingEffect);
	EXPECT_THAT(job.GetNotes()[0].mText, HasSubstr("choose a range within the file"));
}

// Stops while the noise is learned: hours of silence, which take no room on the disk.
class DenoiseStopTest : public ProgramTest
{
protected:
	DenoiseStopTest()
	{
		constexpr std::uint32_t kBytes = 2'000'000'000;
		std::filesystem::path const path = mFolder / "in.wav";
		WriteSound(path, SF_FORMAT_WAV | SF_FORMAT_PCM_16, {1, 8000, std::vector<float>(100)});
		std::string header = ReadBytes(path).substr(0, 44);
		for (unsigned byte = 0; byte < 4; ++byte)
		{
			header[4 + byte] = static_cast<char>((kBytes + 36) >> (8 * byte));
			header[40 + byte] = static_cast<char>(kBytes >> (8 * byte));
		}
		WriteBytes(path, header);
		std::filesystem::resize_file(path, kBytes + 44);
	}
};

TEST_F(DenoiseStopTest, NothingIsLeft)
{
	std::filesystem::create_directory(mFolder / "temporary");
	std::string const temporary = (mFolder / "temporary").string();
	setenv("TMPDIR", temporary.c_str(), 1);
	ProgramResult const result = Run({"render", "in.wav", "-o", "out.wav", "--denoise"},
		[](int inProcess)
		{
			std::this_thread::sleep_for(std::chrono::milliseconds(300));
			kill(inProcess, SIGINT);
		});
	unsetenv("TMPDIR");
	EXPECT_EQ(result.mSignal, SIGINT);
	EXPECT_THAT(mFolder.List(), ElementsAre("in.wav", "temporary"));
	EXPECT_TRUE(std::filesystem::is_empty(mFolder / "temporary"));
}

TEST_F(DenoiseStopTest, JobsReportAndStopLearning)
{
	ClipRenderRequest request;
	request.mInputs = {{mFolder / "in.wav"}};
	request.mOutput = mFolder / "out.wav";
	request.mNoiseReduction.emplace();
	std::stop_source stop;
	RenderProgress last;
	auto const report = [&](RenderProgress const& inProgress)
	{
		last = inProgress;
		if (inProgress.mFramesDone > 0)
		{
			stop.request_stop();
		}
	};
	ClipRenderJob job(request);
	EXPECT_FALSE(job.Run(report, stop.get_token()));
	EXPECT_GT(last.mFramesDone, 0);
	// It is read twice.
	EXPECT_EQ(last.mFramesTotal, 2 * job.GetFrames());
	EXPECT_THAT(mFolder.List(), ElementsAre("in.wav"));
}

} // namespace SonaroHost::Testing::DenoiseRenderTest
