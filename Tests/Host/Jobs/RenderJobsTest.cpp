// Renders of files by several threads: files and summaries are those of one thread, whatever the media and whatever
// happens to them.

#include "Host/ClipRenders.h"
#include "Host/Movies.h"
#include "Host/TimelineJson.h"
#include "Render/Piece/PieceLength.h"
#include "SonaroHost/Media/MovieLibraries.h"
#include "SonaroHost/Render/TimelineRenderJob.h"
#include "Support/Trials.h"

#include <algorithm>
#include <atomic>
#include <fstream>
#include <map>
#include <random>
#include <span>
#include <string>

namespace SonaroHost::Testing::RenderJobsTest
{

namespace
{

using Otio::Stems;
using Otio::TimelineRenderJob;
using Otio::TimelineRenderRequest;

constexpr int kRate = 48000;
constexpr unsigned kJobs[] = {1, 2, 3, 7};

std::string Show(std::optional<LoudnessReading> const& inReading)
{
	std::ostringstream text;
	text << std::hexfloat;
	if (inReading)
	{
		text << inReading->mIntegrated << " " << inReading->mTruePeak << " " << inReading->mPeak << " "
			 << inReading->mRMS;
	}
	return text.str();
}

// All of a summary but the time that it took, to the bit.
std::string Show(RenderSummary const& inSummary)
{
	std::ostringstream text;
	text << std::hexfloat << "mix " << Show(inSummary.mMix) << " gain " << inSummary.mNormalizingGain
		 << " off " << inSummary.mLoudnessError << " why " << inSummary.mGraph.mWhyInOneRun << "\n";
	for (RenderedFile const& file : inSummary.mFiles)
	{
		text << file.mName << " " << file.mPeak << " " << file.mClippedSamples << " "
			 << file.mSmallestLimiterGain << " " << Show(file.mLoudness) << "\n";
	}
	for (auto const& track : inSummary.mTracks)
	{
		text << Show(track) << "\n";
	}
	for (DamagedMedia const& damaged : inSummary.mDamaged)
	{
		text << damaged.mPath << " " << DescribeDamage(damaged) << "\n";
	}
	for (Sequence::TrackReport const& track : inSummary.mGraph.mTracks)
	{
		text << track.mPlace << " " << track.mAheadFrames << "\n";
	}
	return text.str();
}

// What a render came to: its files by name, and its summary or error.
struct Outcome
{
	std::map<std::string, std::string> mFiles;
	std::string mText;
};

class RenderJobs : public ClipRenders
{
protected:
	template <class Job, class Request>
	Outcome RunJob(Request inRequest, unsigned inJobs) const
	{
		inRequest.mJobs = inJobs;
		inRequest.mOutput = mFolder / "out" / inRequest.mOutput.filename().string();
		std::filesystem::remove_all(mFolder / "out");
		std::filesystem::create_directory(mFolder / "out");
		Outcome outcome;
		std::atomic<bool> isReporting = false;
		std::int64_t last = -1;
		auto const note = [&](RenderProgress const& inProgress)
		{
			EXPECT_FALSE(isReporting.exchange(true));
			EXPECT_GT(inProgress.mFramesDone, last);
			EXPECT_LE(inProgress.mFramesDone, inProgress.mFramesTotal);
			last = inProgress.mFramesDone;
			isReporting = false;
		};
		try
		{
			outcome.mText = Show(*Job(inRequest).Run(note));
		}
		catch (HostError const& error)
		{
			outcome.mText = error.what();
		}
		for (auto const& entry : std::filesystem::recursive_directory_iterator(mFolder / "out"))
		{
			if (entry.is_regular_file())
			{
				outcome.mFiles[entry.path().filename()] = ReadBytes(entry.path());
			}
		}
		return outcome;
	}

	// Gives what one thread gives, once it is the same for all numbers of threads and cuts.
	template <class Job, class Request>
	Outcome RunByAll(Request const& inRequest) const
	{
		Outcome const alone = RunJob<Job>(inRequest, 1);
		for (unsigned const jobs : kJobs)
		{
			constexpr std::int64_t kPieces[] = {1000, 0, 7001};
			for (std::int64_t const frames :
				std::span(kPieces).first(SN::Testing::GetNumTrials(3) == 3 ? 3 : 1))
			{
				PieceLength const length(frames);
				Outcome const shared = RunJob<Job>(inRequest, jobs);
				EXPECT_EQ(shared.mText, alone.mText) << jobs << " threads, pieces of " << frames;
				EXPECT_TRUE(shared.mFiles == alone.mFiles) << jobs << " threads, pieces of " << frames;
			}
		}
		return alone;
	}

	std::filesystem::path WriteTimeline(Json const& inTimeline) const
	{
		std::ofstream(mFolder / "edit.otio") << inTimeline.dump();
		return mFolder / "edit.otio";
	}

	void WriteMedia() const
	{
		WriteSound(mFolder / "a.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_24, MakeSound(2, kRate, 2 * kRate));
		WriteSound(mFolder / "b.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, MakeSound(1, 44100, 2 * 44100));
		WriteSound(mFolder / "c.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS, MakeSound(2, kRate, 2 * kRate));
	}

	// Cuts of all media, transitions, a nested sequence at another speed, and a level.
	Json MakeTimeline() const
	{
		Json const warp = {{"OTIO_SCHEMA", "LinearTimeWarp.1"}, {"name", ""},
			{"effect_name", "LinearTimeWarp"}, {"time_scalar", 1.5}};
		Json const nest =
			With(Stack({Track("inner", {Clip("d", "b.flac", 0.0, 0.8), Clip("e", "c.ogg", 1.0, 0.6)}),
					 Track("under", {Gap(0.2), Clip("f", "a.wav", 0.3, 1.0)})}),
				{{"source_range", Range(0.12, 0.8)}, {"effects", List({warp})}});
		return Timeline({Track("one", {Clip("a", "a.wav", 0.2, 0.52), Clip("b", "c.ogg", 1.2, 0.4), Gap(0.2),
										  Clip("c", "b.flac", 0.04, 0.88)}),
							WithSettings(Track("two", {Gap(0.16), nest, Clip("g", "c.ogg", 0.4, 0.6)}),
								{{"gain", -3.0}, {"pan", 0.4}})},
			{Marker("M", 0.2, 0.6), Marker("N", 0.9, 0.5)});
	}

	TimelineRenderRequest MakeTimelineRequest(std::string const& inOutput = "mix.wav") const
	{
		TimelineRenderRequest request;
		request.mInput = mFolder / "edit.otio";
		request.mOutput = inOutput;
		request.mBlockFrames = 500;
		return request;
	}
};

TEST_F(RenderJobs, SoundFilesOfAnyKindGiveTheSameFile)
{
	struct Case
	{
		char const* mName;
		int mFormat;
		double mSpeed;
		RenderDirection mDirection;
		std::optional<int> mRate;
		Sequence::Resampling mResampling;
	};
	constexpr auto kForward = RenderDirection::kForward;
	constexpr auto kReverse = RenderDirection::kReverse;
	constexpr auto kExact = Sequence::Resampling::kExact;
	Case const cases[] = {
		{"WAV", SF_FORMAT_WAV | SF_FORMAT_FLOAT, 1.0, kForward, {}, kExact},
		{"FLAC at another speed", SF_FORMAT_FLAC | SF_FORMAT_PCM_24, 1.37, kForward, {}, kExact},
		{"Vorbis", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 1.0, kForward, 44100, kExact},
		{"Vorbis in reverse", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 1.0, kReverse, {}, kExact},
		{"MP3, draft", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, 0.5, kForward, {},
			Sequence::Resampling::kDraft},
		{"the engine's own resampling", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 1.1, kForward, {},
			Sequence::Resampling::kEngine},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		WriteInput(MakeSound(2, kRate, 40000), test.mFormat);
		ClipRenderRequest request = MakeRequest();
		request.mInputs[0].mStart = TimePosition::FromSamples(1234);
		request.mSpeed = test.mSpeed;
		request.mDirection = test.mDirection;
		request.mSampleRate = test.mRate;
		request.mResampling = test.mResampling;
		request.mMeasuring = Measuring::kOutput;
		request.mFadeIn = TimePosition::FromSamples(3000);
		request.mBlockFrames = 256;
		Outcome const outcome = RunByAll<ClipRenderJob>(request);
		EXPECT_EQ(outcome.mFiles.size(), 1u);
		EXPECT_EQ(outcome.mText.find("'in.wav' is resampled by the real-time engine") != std::string::npos,
			test.mResampling == Sequence::Resampling::kEngine)
			<< outcome.mText;
	}
}

TEST_F(RenderJobs, TimelinesGiveTheSameFilesAndReadings)
{
	WriteMedia();
	WriteTimeline(MakeTimeline());
	struct Case
	{
		char const* mName;
		Stems mStems;
		OutputLevels mLevels;
		char const* mRange;
		std::size_t mFiles;
	};
	Case const cases[] = {
		{"whole", Stems::kNone, {}, "", 1},
		{"a part", Stems::kNone, {}, "0.37+0.9", 1},
		{"normalized and limited", Stems::kNone, {-16.0, -1.0}, "", 1},
		{"stems of tracks", Stems::kTracks, {-20.0, {}}, "", 2},
		{"stems of markers", Stems::kMarkers, {{}, -6.0}, "", 2},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		TimelineRenderRequest request = MakeTimelineRequest();
		request.mStems = test.mStems;
		request.mLevels = test.mLevels;
		request.mRange = test.mRange;
		request.mMeasuring = Measuring::kTracks;
		EXPECT_EQ(RunByAll<TimelineRenderJob>(request).mFiles.size(), test.mFiles);
	}
}

TEST_F(RenderJobs, TheFirstFailureInTheProgrammeIsReportedAndLeavesNoFile)
{
	WriteMedia();
	WriteTimeline(Timeline({Track("one", {Clip("a", "c.ogg", 0.0, 1.0), Clip("b", "b.flac", 0.0, 1.8)}),
		Track("two", {Gap(0.4), Clip("c", "a.flac", 0.0, 1.8)})}));
	TimelineRenderRequest const request = MakeTimelineRequest();
	std::string const flac = ReadBytes(mFolder / "b.flac");
	struct Case
	{
		double mFirst;
		double mSecond;
		char const* mNamed;
	};
	for (Case const& test :
		{Case{0.7, 1.0, "a.flac"}, {1.0, 0.6, "b.flac"}, {0.9, 0.2, "b.flac"}, {0.2, 0.2, "a.flac"}})
	{
		SCOPED_TRACE(testing::Message() << test.mFirst << " of a.flac, " << test.mSecond << " of b.flac");
		// Spoils the rest of a file so that it still looks unchanged.
		auto const spoil = [&](char const* inName, double inPart)
		{
			std::filesystem::path const path = mFolder / inName;
			auto const time = std::filesystem::last_write_time(path);
			std::string bytes = flac;
			bytes.resize(static_cast<std::size_t>(static_cast<double>(flac.size()) * inPart));
			bytes.resize(flac.size());
			WriteBytes(path, bytes);
			std::filesystem::last_write_time(path, time);
		};
		std::string alone;
		for (unsigned const jobs : kJobs)
		{
			PieceLength const length(3000);
			TimelineRenderRequest shared = request;
			shared.mJobs = jobs;
			shared.mOutput = mFolder / "mix.wav";
			WriteBytes(mFolder / "a.flac", flac);
			WriteBytes(mFolder / "b.flac", flac);
			TimelineRenderJob job(shared);
			spoil("a.flac", test.mFirst);
			spoil("b.flac", test.mSecond);
			std::string const refusal = GetRefusalOf([&] { job.Run(); });
			EXPECT_THAT(refusal, testing::HasSubstr(test.mNamed)) << jobs << " threads";
			alone = jobs == 1 ? refusal : alone;
			EXPECT_EQ(refusal, alone) << jobs << " threads";
			EXPECT_THAT(mFolder.List(),
				testing::UnorderedElementsAre("a.flac", "a.wav", "b.flac", "c.ogg", "edit.otio"));
		}
	}
}

TEST_F(RenderJobs, DamageIsFoundAlikeAndRefusedAtTheSamePlace)
{
	if (DescribeMovieLibraries().empty())
	{
		GTEST_SKIP() << "built without SONARO_WITH_LIBAV";
	}
	WriteSound(mFolder / "in.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, MakeSound(1, kRate, 3 * kRate));
	RunFfmpeg("-i " + (mFolder / "in.wav").string() + " -c:a ac3 " + (mFolder / "a.mkv").string());
	std::string bytes = ReadBytes(mFolder / "a.mkv");
	for (std::size_t const part : {5u, 9u, 13u})
	{
		std::size_t const sync = bytes.find("\x0b\x77", bytes.size() * part / 16);
		std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(sync) + 20, 40, '\x55');
	}
	WriteBytes(mFolder / "a.mkv", bytes);
	WriteTimeline(Timeline(
		{Track("one", {Clip("a", "a.mkv", 0.2, 2.0)}), Track("two", {Clip("b", "a.mkv", 1.2, 1.6)})}));
	TimelineRenderRequest request = MakeTimelineRequest();
	EXPECT_THAT(RunByAll<TimelineRenderJob>(request).mText, testing::HasSubstr("silence from"));
	request.mRefusesDamage = true;
	Outcome const refused = RunByAll<TimelineRenderJob>(request);
	EXPECT_THAT(refused.mText, testing::HasSubstr("get a complete copy"));
	EXPECT_TRUE(refused.mFiles.empty());
}

TEST_F(RenderJobs, AStopAtAnyMomentLeavesNoFile)
{
	WriteMedia();
	WriteTimeline(MakeTimeline());
	TimelineRenderRequest request = MakeTimelineRequest();
	request.mOutput = mFolder / "stems";
	request.mStems = Stems::kTracks;
	request.mMeasuring = Measuring::kTracks;
	std::mt19937 random(7);
	for (unsigned trial = 0; trial < SN::Testing::GetNumTrials(40); ++trial)
	{
		PieceLength const length(static_cast<std::int64_t>(1 + random() % 9000));
		request.mJobs = 1 + trial % 4;
		std::stop_source stop;
		auto left = random() % 500;
		auto const summary = TimelineRenderJob(request).Run(
			[&](RenderProgress const&)
			{
				if (left-- == 0)
				{
					stop.request_stop();
				}
			},
			stop.get_token());
		EXPECT_FALSE(summary);
		EXPECT_THAT(mFolder.List(), testing::UnorderedElementsAre("a.wav", "b.flac", "c.ogg", "edit.otio"));
	}
}

TEST_F(RenderJobs, NumbersOutOfRangeAreRefused)
{
	WriteInput(MakeSound(1, kRate, 100));
	ClipRenderRequest request = MakeRequest();
	for (unsigned const jobs : {0u, kMostJobs + 1})
	{
		request.mJobs = jobs;
		ExpectRefusal(request, "1 to 256 threads");
	}
}

} // namespace

} // namespace SonaroHost::Testing::RenderJobsTest
