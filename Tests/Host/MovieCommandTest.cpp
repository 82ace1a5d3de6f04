// Runs the real program on movies, as a shell does.

#include "Movies.h"
#include "ProgramRun.h"
#include "SonaroHost/Media/MovieLibraries.h"
#include "TimelineJson.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>

namespace SonaroHost::Testing::MovieCommandTest
{

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

constexpr int kRate = 48000;

class MovieCommandTest : public ProgramTest
{
protected:
	void SetUp() override
	{
		if (DescribeMovieLibraries().empty())
		{
			GTEST_SKIP() << "built without SONARO_WITH_LIBAV";
		}
		WriteSound(mFolder / "stereo.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_24, mSource.Pick({0, 1}));
		WriteSound(mFolder / "mono.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_24, mSource.Pick({2}));
	}

	std::string Path(std::string const& inName) const { return (mFolder / inName).string(); }

	// Two streams, of three channels together, and a picture from ten o'clock on.
	void WriteFilm() const
	{
		RunFfmpeg("-f lavfi -i color=s=16x16:r=25:d=1 -i " + Path("stereo.wav") + " -i " + Path("mono.wav") +
				  " -map 0 -map 1 -map 2 -timecode 10:00:00:00 -c:v mpeg2video -c:a pcm_s24le " +
				  Path("film.mov"));
	}

	// AC-3 of which one packet is not whole.
	void WriteDamaged() const
	{
		RunFfmpeg("-i " + Path("mono.wav") + " -c:a ac3 " + Path("damaged.mkv"));
		std::string bytes = ReadBytes(mFolder / "damaged.mkv");
		std::size_t const sync = bytes.find("\x0b\x77", bytes.size() / 2);
		std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(sync) + 20, 40, '\x55');
		WriteBytes(mFolder / "damaged.mkv", bytes);
	}

	void WriteTimeline(std::initializer_list<Json> inClips)
	{
		WriteBytes(mFolder / "edit.otio", Timeline({Track("Film", inClips)}).dump());
	}

	Sound const mSource = MakeIndexSound(3, kRate, 2 * kRate);
};

TEST_F(MovieCommandTest, StreamsAreChosenByOptionAndByMetadata)
{
	WriteFilm();
	ASSERT_EQ(Run({"render", "film.mov", "-o", "all.wav"}).mExitCode, 0);
	EXPECT_TRUE(SameBits(ReadSound(mFolder / "all.wav"), mSource));
	ASSERT_EQ(Run({"render", "film.mov", "-o", "one.wav", "--stream", "2"}).mExitCode, 0);
	EXPECT_TRUE(SameBits(ReadSound(mFolder / "one.wav"), mSource.Pick({2})));
	auto const measure = [this](Words const& inWords) {
		return Json::parse(Run(Join({"loudness", "--json"}, inWords)).mOutput)["inputs"][0]["integratedLufs"];
	};
	EXPECT_EQ(measure({"film.mov", "--stream", "2"}), measure({"one.wav"}));
	EXPECT_NE(measure({"film.mov"}), measure({"one.wav"}));
	ExpectRefusal(
		{"render", "film.mov", "-o", "x.wav", "--stream", "3"}, 1, {"'film.mov': has no audio stream 3"});
	ExpectRefusal({"render", "film.mov", "mono.wav", "-o", "x.wav", "--stream", "1"}, 2,
		{"--stream applies only to a single"});

	WriteTimeline({WithSettings(Clip("a", "film.mov"), {{"stream", 2}}),
		WithSettings(Clip("b", "film.mov"), {{"channels", {3}}})});
	ProgramResult const result = Run({"render", "edit.otio", "-o", "edit.wav"});
	ASSERT_EQ(result.mExitCode, 0) << result.mErrors;
	Sound twice = mSource.Pick({2}).Cut(0, kRate);
	twice.mSamples.insert(twice.mSamples.end(), twice.mSamples.begin(), twice.mSamples.begin() + kRate);
	EXPECT_TRUE(SameBits(ReadSound(mFolder / "edit.wav"), twice));
	// The sound beside it would be taken for that of a movie that cannot be read.
	EXPECT_EQ(Run({"render", "edit.otio", "-o", "film.wav"}).mExitCode, 0);
}

// A codec with a delay, which is decoded in order, here in a container with edit lists.
TEST_F(MovieCommandTest, MoviesKeepTheirPitchLikeTheSoundInThem)
{
	RunFfmpeg("-f lavfi -i color=s=16x16:r=25:d=2 -i " + Path("stereo.wav") + " -c:v mpeg2video -c:a aac " +
			  Path("film.mp4"));
	ASSERT_EQ(Run({"render", "film.mp4", "-o", "decoded.wav"}).mExitCode, 0);
	for (Words const& words : {Words{"--speed", "1.25", "--keep-pitch"}, {"--pitch", "2", "--start", "0.5"},
			 {"--speed", "0.8", "--keep-pitch", "--stretch", "scaler", "--reverse"}})
	{
		SCOPED_TRACE(testing::PrintToString(words));
		ASSERT_EQ(Run(Join({"render", "film.mp4", "-o", "film.wav"}, words)).mExitCode, 0);
		ASSERT_EQ(Run(Join({"render", "decoded.wav", "-o", "sound.wav"}, words)).mExitCode, 0);
		Sound const film = ReadSound(mFolder / "film.wav");
		EXPECT_GT(film.GetFrames(), kRate);
		EXPECT_TRUE(SameBits(film, ReadSound(mFolder / "sound.wav")));
	}
}

TEST_F(MovieCommandTest, InfoShowsStreamsAndStart)
{
	WriteFilm();
	EXPECT_THAT(Run({"info", "film.mov"}).mOutput,
		AllOf(HasSubstr("10:00:00:00 at 25 fps"),
			HasSubstr("1: PCM signed 24-bit little-endian, 2 channels, 48000 Hz"),
			HasSubstr("2: PCM signed 24-bit little-endian, 1 channel, 48000 Hz")));
	Json const json = Json::parse(Run({"info", "film.mov", "--json", "--stream", "2"}).mOutput);
	EXPECT_EQ(json["start"]["seconds"], 36000.0);
	EXPECT_EQ(json["streams"][0]["isRead"], false);
	EXPECT_EQ(json["streams"][1]["isRead"], true);
	WriteTimeline({Clip("a", "film.mov"), Clip("b", "mono.wav")});
	EXPECT_THAT(Run({"info", "edit.otio"}).mOutput, HasSubstr("length  start                  file"));
	EXPECT_THAT(Run({"--version"}).mOutput, HasSubstr("libavcodec"));
}

// An environment variable of the programs that are started meanwhile.
class ScopedVariable
{
public:
	ScopedVariable(char const* inName, std::string const& inValue)
		: mName(inName)
	{
		setenv(inName, inValue.c_str(), 1);
	}
	~ScopedVariable() { unsetenv(mName); }
	ScopedVariable(ScopedVariable const&) = delete;
	ScopedVariable& operator=(ScopedVariable const&) = delete;

private:
	char const* const mName;
};

TEST_F(MovieCommandTest, LibavIsLoadedAtTheFirstMovieAndNotMissedBefore)
{
	WriteFilm();
	{
		ScopedVariable const searches("LD_DEBUG", "libs");
		EXPECT_THAT(Run({"info", "stereo.wav"}).mErrors,
			AllOf(HasSubstr("libsndfile"), Not(HasSubstr("libavcodec"))));
		EXPECT_THAT(Run({"info", "film.mov"}).mErrors, HasSubstr("libavcodec"));
	}
	// A file that is no library is found in place of the real one.
	std::string const libraries = DescribeMovieLibraries();
	std::string const version = libraries.substr(libraries.rfind(' ') + 1);
	std::string const name = "libswresample.so." + version.substr(0, version.find('.'));
	WriteBytes(mFolder / name, std::string(4096, 'x'));
	ScopedVariable const path("LD_LIBRARY_PATH", mFolder.Get().string());
	ExpectRefusal({"info", "film.mov"}, 1, {"'film.mov': is a movie, and libav", name, "install libav"});
	EXPECT_EQ(Run({"info", "stereo.wav"}).mExitCode, 0);
	EXPECT_THAT(Run({"--version"}).mOutput, HasSubstr("movies: not read"));
}

TEST_F(MovieCommandTest, ClipsAreCountedFromTheTimecodeWhereTheyFitOnlySo)
{
	WriteFilm();
	struct Case
	{
		double mStart;
		std::int64_t mFirst;
		bool mIsGuess;
	};
	for (Case const& test : {Case{0.5, 24000, false}, {36000.5, 24000, true}, {36001.0, 48000, true}})
	{
		SCOPED_TRACE(test.mStart);
		WriteTimeline({WithSettings(Clip("a", "film.mov", test.mStart), {{"channels", {1}}})});
		ProgramResult const result = Run({"render", "edit.otio", "-o", "edit.wav"});
		EXPECT_EQ(result.mExitCode, 0);
		EXPECT_EQ(
			result.mErrors.find("from the file's own start, 10:00:00:00 at 25 fps") != std::string::npos,
			test.mIsGuess)
			<< result.mErrors;
		EXPECT_TRUE(SameBits(ReadSound(mFolder / "edit.wav"), mSource.Pick({0}).Cut(test.mFirst, kRate)));
	}
	WriteTimeline({Clip("a", "film.mov", 7200.0)});
	EXPECT_EQ(Run({"render", "edit.otio", "-o", "edit.wav"}).mExitCode, 3);
	// An available_range says where the file starts.
	Json clip = Clip("a", "film.mov", 36000.5);
	clip["media_reference"]["available_range"] = Range(36000.25, 1.5);
	WriteTimeline({WithSettings(clip, {{"channels", {1}}})});
	EXPECT_EQ(Run({"render", "edit.otio", "-o", "edit.wav", "--strict"}).mExitCode, 0);
	EXPECT_TRUE(SameBits(ReadSound(mFolder / "edit.wav"), mSource.Pick({0}).Cut(12000, kRate)));
}

TEST_F(MovieCommandTest, DamageIsReportedAndStrictlyRefused)
{
	WriteDamaged();
	WriteTimeline({Clip("a", "damaged.mkv", 0.0, 1.8)});
	ProgramResult const result = Run({"render", "edit.otio", "-o", "edit.wav", "--report", "edit.json"});
	EXPECT_EQ(result.mExitCode, 0);
	EXPECT_THAT(result.mErrors, HasSubstr("damaged.mkv' is damaged: silence from 0:0"));
	Json const report = Json::parse(ReadBytes(mFolder / "edit.json"));
	Json const& stretch = report["damaged"].at(0)["stretches"].at(0);
	EXPECT_EQ(stretch["endSample"].get<int>() - stretch["firstSample"].get<int>(), 1536);
	std::filesystem::remove(mFolder / "edit.wav");
	ExpectRefusal({"render", "edit.otio", "-o", "edit.wav", "--strict"}, 1, {"damaged.mkv", "is damaged"});
	EXPECT_FALSE(std::filesystem::exists(mFolder / "edit.wav"));
	EXPECT_EQ(Run({"render", "edit.otio", "-o", "edit.wav", "--strict=media"}).mExitCode, 0);
	EXPECT_THAT(Run({"render", "damaged.mkv", "-o", "all.wav"}).mErrors, HasSubstr("is damaged"));
}

TEST_F(MovieCommandTest, ASingleFileIsStrictlyRefusedWithItsReport)
{
	WriteDamaged();
	WriteFilm();
	RunFfmpeg("-i " + Path("stereo.wav") + " -ar 44100 " + Path("other.wav"));
	RunFfmpeg("-i " + Path("stereo.wav") + " -i " + Path("other.wav") + " -map 0 -map 1 -c:a pcm_s16le " +
			  Path("rates.mov"));
	RunFfmpeg("-i " + Path("mono.wav") + " -movflags +faststart -c:a pcm_s24le " + Path("cut.mov"));
	std::filesystem::resize_file(mFolder / "cut.mov", std::filesystem::file_size(mFolder / "cut.mov") / 2);
	struct Case
	{
		char const* mInput;
		char const* mStrictness;
		// Empty where the file is rendered.
		std::string mReason;
	};
	for (Case const& test : {Case{"stereo.wav", "--strict", ""}, {"film.mov", "--strict", ""},
			 {"damaged.mkv", "--strict", "'damaged.mkv': is damaged: silence from 0:0"},
			 {"damaged.mkv", "--strict=all", "is damaged"}, {"damaged.mkv", "--strict=media", ""},
			 {"cut.mov", "--strict", "'cut.mov': is damaged"}, {"cut.mov", "--strict=media", ""},
			 {"rates.mov", "--strict", "guessed or not read"}})
	{
		SCOPED_TRACE(test.mInput + std::string(test.mStrictness));
		ProgramResult const result =
			Run({"render", test.mInput, "-o", "out.wav", "--report", "out.json", "--json", test.mStrictness});
		EXPECT_EQ(result.mExitCode, test.mReason.empty() ? 0 : 1) << result.mErrors;
		EXPECT_EQ(std::filesystem::remove(mFolder / "out.wav"), test.mReason.empty());
		std::string const report = ReadBytes(mFolder / "out.json");
		for (Json const& json : {Json::parse(result.mOutput), Json::parse(report)})
		{
			EXPECT_THAT(json.value("refused", ""), HasSubstr(test.mReason));
			EXPECT_EQ(json.contains("refused"), !test.mReason.empty());
		}
		EXPECT_EQ(Json::parse(report)["outputs"].empty(), !test.mReason.empty());
		EXPECT_THAT(result.mErrors, HasSubstr(test.mReason));
	}
}

TEST_F(MovieCommandTest, MoviesWithoutSoundAreSilentAndNotMissing)
{
	RunFfmpeg("-f lavfi -i color=s=16x16:r=25:d=1 -c:v mpeg2video " + Path("mute.mov"));
	WriteTimeline({Clip("a", "mute.mov"), Clip("b", "mono.wav")});
	ProgramResult const result =
		Run({"render", "edit.otio", "-o", "edit.wav", "--strict", "--report", "edit.json"});
	EXPECT_EQ(result.mExitCode, 0) << result.mErrors;
	EXPECT_THAT(ReadBytes(mFolder / "edit.json"), HasSubstr("is a movie without sound"));
	Sound expected{1, kRate, std::vector<float>(kRate)};
	Sound const heard = mSource.Pick({2}).Cut(0, kRate);
	expected.mSamples.insert(expected.mSamples.end(), heard.mSamples.begin(), heard.mSamples.end());
	EXPECT_TRUE(SameBits(ReadSound(mFolder / "edit.wav"), expected));
	ExpectRefusal({"render", "mute.mov", "-o", "x.wav"}, 1, {"is a movie without sound"});
}

} // namespace SonaroHost::Testing::MovieCommandTest
