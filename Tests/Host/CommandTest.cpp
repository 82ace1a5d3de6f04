// Runs the real program, as a shell does.

#include "ProgramRun.h"
#include "TimelineJson.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <thread>
#include <tuple>
#include <utility>

#include <unistd.h>

namespace SonaroHost::Testing::CommandTest
{

using testing::AllOf;
using testing::ElementsAre;
using testing::FloatNear;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Pointwise;
using testing::StartsWith;
using Json = nlohmann::json;

class CommandTest : public ProgramTest
{
protected:
	Sound WriteInput(std::string const& inName = "in.wav", std::int64_t inFrames = 48000)
	{
		Sound const sound = MakeSound(2, 48000, inFrames);
		WriteSound(mFolder / inName, SF_FORMAT_WAV | SF_FORMAT_FLOAT, sound);
		return sound;
	}

	// Each follows the words of a command, with what is said of it.
	void ExpectWrongOptions(Words const& inCommand, std::vector<std::pair<Words, char const*>> const& inCases)
	{
		WriteInput();
		std::vector<RefusedWords> refused;
		for (auto const& [options, text] : inCases)
		{
			refused.push_back({2, Join(inCommand, options), {text}});
		}
		ExpectRefusals(refused);
		EXPECT_THAT(mFolder.List(), ElementsAre("in.wav"));
	}
};

TEST_F(CommandTest, RendersAFileAndSaysSo)
{
	Sound const sound = WriteInput();
	ProgramResult const result = Run({"render", "in.wav", "-o", "out.wav"});
	EXPECT_EQ(result.mExitCode, 0);
	EXPECT_EQ(result.mErrors, "");
	EXPECT_THAT(result.mOutput, AllOf(StartsWith("out.wav: 0:01.000 (48000 samples), stereo, 48000 Hz, "),
									HasSubstr(" dBFS, true peak "), HasSubstr(" dBTP, loudness -"),
									HasSubstr(" LUFS\n"), HasSubstr("times faster than real time\n")));
	EXPECT_TRUE(SameBits(ReadSound(mFolder / "out.wav"), sound));
	EXPECT_THAT(mFolder.List(), ElementsAre("in.wav", "out.wav"));
}

TEST_F(CommandTest, OptionsReachTheRender)
{
	Sound const sound = WriteInput();
	Sound softer = sound;
	for (float& sample : softer.mSamples)
	{
		sample *= 0.1f;
	}
	std::pair<Words, Sound> const cases[] = {
		{{"--start", "0.5"}, sound.Cut(24000, 24000)},
		{{"--start", "100s", "--duration", "0:00.25"}, sound.Cut(100, 12000)},
		{{"--channels", "2,1"}, sound.Pick({1, 0})},
		{{"--channels", "2"}, sound.Pick({1})},
		{{"--reverse", "--block", "7"}, sound.Reversed()},
		{{"--gain-db", "-20"}, softer},
		{{"--as-playback"}, sound},
		{{"--gain-db=0", "--block", "262144", "--format", "wav"}, sound},
	};
	for (auto const& [options, expected] : cases)
	{
		SCOPED_TRACE(testing::PrintToString(options));
		ProgramResult const result = Run(Join({"render", "in.wav", "-o", "out.wav", "--quiet"}, options));
		EXPECT_EQ(result.mExitCode, 0);
		EXPECT_EQ(result.mOutput + result.mErrors, "");
		EXPECT_TRUE(SameBits(ReadSound(mFolder / "out.wav"), expected));
	}
}

TEST_F(CommandTest, JsonIsAllThatTheStandardOutputHolds)
{
	WriteInput();
	ProgramResult const render = Run({"render", "in.wav", "-o", "out.wav", "--json", "--bits", "16",
		"--gain-db", "6", "--duration", "0.5"});
	EXPECT_EQ(render.mExitCode, 0);
	auto const summary = Json::parse(render.mOutput);
	EXPECT_EQ(summary["output"], "out.wav");
	EXPECT_EQ(summary["samples"], 24000);
	EXPECT_EQ(summary["channels"], 2);
	EXPECT_EQ(summary["rate"], 48000);
	EXPECT_EQ(summary["seconds"], 0.5);
	EXPECT_EQ(summary["dither"], "tpdf");
	EXPECT_TRUE(summary["peakDbfs"].is_number());
	EXPECT_TRUE(summary["clippedSamples"].is_number_integer());

	EXPECT_FALSE(summary.contains("playback"));

	ProgramResult const playback = Run({"render", "in.wav", "-o", "out.wav", "--json", "--as-playback",
		"--bits", "16", "--duration", "0.5"});
	EXPECT_EQ(playback.mExitCode, 0);
	auto const readAhead = Json::parse(playback.mOutput)["playback"];
	EXPECT_EQ(readAhead["misses"], 0);
	EXPECT_EQ(readAhead["missedSamples"], 0);
	EXPECT_TRUE(readAhead["diskLoadPercent"].is_number_integer());
	EXPECT_TRUE(readAhead["batchesGivenUp"].is_number_integer());
	EXPECT_TRUE(readAhead["wasBehind"].is_boolean());

	ProgramResult const info = Run({"info", "out.wav", "--json"});
	EXPECT_EQ(info.mExitCode, 0);
	auto const facts = Json::parse(info.mOutput);
	EXPECT_EQ(facts["format"], "WAV (Microsoft)");
	EXPECT_EQ(facts["encoding"], "Signed 16 bit PCM");
	EXPECT_EQ(facts["layout"], "stereo");
	EXPECT_EQ(facts["places"], Json({"left", "right"}));
	EXPECT_EQ(facts["samples"], 24000);
	EXPECT_EQ(facts["seconds"], 0.5);
}

TEST_F(CommandTest, FadesSpeedAndRateReachTheRender)
{
	Sound const sound = WriteInput();
	ASSERT_EQ(
		Run({"render", "in.wav", "-o", "out.wav", "--fade-in", "0.2", "--fade-out", "9600s"}).mExitCode, 0);
	Sound const faded = ReadSound(mFolder / "out.wav");
	EXPECT_TRUE(SameBits(faded.Cut(10000, 28000), sound.Cut(10000, 28000)));
	EXPECT_FALSE(SameBits(faded.Cut(9000, 100), sound.Cut(9000, 100)));
	EXPECT_FALSE(SameBits(faded.Cut(39000, 100), sound.Cut(39000, 100)));
	ASSERT_EQ(Run({"render", "in.wav", "-o", "out.wav", "--speed", "1.5"}).mExitCode, 0);
	EXPECT_EQ(ReadSound(mFolder / "out.wav").GetFrames(), 32000);
	ProgramResult const result = Run({"render", "in.wav", "-o", "out.wav", "--rate", "44100"});
	EXPECT_THAT(result.mOutput, HasSubstr("0:01.000 (44100 samples), stereo, 44100 Hz"));
	EXPECT_EQ(ReadSound(mFolder / "out.wav").mSampleRate, 44100);
	ASSERT_EQ(Run({"render", "in.wav", "-o", "out.wav", "--speed", "1"}).mExitCode, 0);
	EXPECT_TRUE(SameBits(ReadSound(mFolder / "out.wav"), sound));
}

TEST_F(CommandTest, KeptAndShiftedPitchesReachTheRender)
{
	WriteInput();
	std::vector<Sound> sounds;
	for (Words const& words : {Words{"--speed", "1.5"}, {"--speed", "1.5", "--keep-pitch"},
			 {"--speed", "1.5", "--pitch", "2"}, {"--speed", "1.5", "--keep-pitch", "--stretch", "scaler"}})
	{
		ProgramResult const result =
			Run(Join({"render", "in.wav", "-o", "out.wav", "--report", "report.json"}, words));
		ASSERT_EQ(result.mExitCode, 0) << result.mErrors;
		auto const clip = Json::parse(ReadBytes(mFolder / "report.json"))["clips"][0];
		bool const keeps = std::ranges::find(words, "--keep-pitch") != words.end();
		EXPECT_EQ(clip["keepPitch"], keeps);
		EXPECT_EQ(clip["pitch"], words[2 % words.size()] == "--pitch" ? 2.0 : 0.0);
		EXPECT_EQ(clip["endMediaSample"], 48000);
		sounds.push_back(ReadSound(mFolder / "out.wav"));
		EXPECT_EQ(sounds.back().GetFrames(), 32000);
		for (std::size_t i = 0; i + 1 < sounds.size(); ++i)
		{
			EXPECT_FALSE(SameBits(sounds[i], sounds.back()));
		}
	}
}

TEST_F(CommandTest, SeveralInputsAreLaidOutAndAllAreNamed)
{
	Sound const first = WriteInput("a.wav", 24000);
	Sound const second = WriteInput("b.wav", 12000);
	EXPECT_THAT(Run({"render", "a.wav", "b.wav", "a.wav", "-o", "out.wav"}).mOutput,
		AllOf(StartsWith("out.wav: 0:01.250 (60000 samples), stereo, 48000 Hz, 32-bit float WAV\n"),
			HasSubstr("\nfrom a.wav at 0:00.000\nfrom b.wav at 0:00.500\nfrom a.wav at 0:00.750\npeak ")));
	EXPECT_TRUE(SameBits(ReadSound(mFolder / "out.wav").Cut(24000, 12000), second));
	auto const summary = Json::parse(
		Run({"render", "a.wav", "--at", "0:01", "-o", "out.wav", "--json", "b.wav", "--at=100s"}).mOutput);
	EXPECT_EQ(summary["inputs"], Json::parse(R"([{"path": "a.wav", "position": 48000, "samples": 24000},
			{"path": "b.wav", "position": 100, "samples": 12000}])"));
	EXPECT_EQ(summary["samples"], 72000);
	EXPECT_TRUE(SameBits(ReadSound(mFolder / "out.wav").Cut(48000, 24000), first));
	ExpectRefusal({"render", "a.wav", "missing.wav", "-o", "out.wav"}, 1, {"'missing.wav': does not exist"});
}

TEST_F(CommandTest, LoudnessIsPartOfTheSummary)
{
	Sound tone{2, 48000, {}};
	for (int i = 0; i < 48000 * 6; ++i)
	{
		tone.mSamples.push_back(0.0707946f * static_cast<float>(std::sin(0.1308996939 * (i / 2))));
	}
	WriteSound(mFolder / "tone.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, tone);
	WriteSound(mFolder / "silence.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT,
		{1, 48000, std::vector<float>(48000, 0.0f)});
	EXPECT_THAT(Run({"render", "tone.wav", "-o", "out.wav"}).mOutput,
		HasSubstr("true peak -23.00 dBTP, loudness -23.0 LUFS\n"));
	EXPECT_THAT(Run({"render", "silence.wav", "-o", "out.wav"}).mOutput,
		HasSubstr("peak -inf dBFS, true peak -inf dBTP, loudness -inf LUFS\n"));
	auto const louder = Json::parse(
		Run({"render", "tone.wav", "-o", "out.wav", "--gain-db", "6", "--quiet", "--json"}).mOutput);
	EXPECT_NEAR(louder["integratedLufs"].get<double>(), -17.0, 0.05);
	EXPECT_NEAR(louder["truePeakDbtp"].get<double>(), -17.0, 0.02);
	auto const silent = Json::parse(Run({"render", "silence.wav", "-o", "out.wav", "--json"}).mOutput);
	EXPECT_EQ(silent["integratedLufs"], "-inf");
	EXPECT_EQ(silent["truePeakDbtp"], "-inf");
}

TEST_F(CommandTest, InfoShowsPeopleWhatAFileIs)
{
	WriteSound(mFolder / "film.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_24, MakeSound(6, 48000, 72000));
	ProgramResult const result = Run({"info", "film.flac"});
	EXPECT_EQ(result.mExitCode, 0);
	for (char const* const text :
		{"film.flac", "FLAC", "24 bit", "6 (5.1: left, right, centre, LFE, left surround, right surround)",
			"48000 Hz", "0:01.500 (72000 samples)"})
	{
		EXPECT_THAT(result.mOutput, HasSubstr(text));
	}
}

TEST_F(CommandTest, LayoutsPansAndMixdownsReachTheRender)
{
	// One frame, told apart by its channels.
	WriteSound(mFolder / "one.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, {1, 48000, {0.5f}});
	WriteSound(mFolder / "two.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, {2, 48000, {0.5f, 0.25f}});
	WriteSound(mFolder / "six.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT,
		{6, 48000, {0.1f, 0.2f, 0.3f, 0.4f, 0.05f, 0.06f}});
	std::tuple<Words, char const*, std::vector<float>> const cases[] = {
		{{"two.wav", "--layout", "mono"}, "mono", {0.375f}},
		{{"one.wav", "--layout", "stereo"}, "stereo", {0.5f, 0.5f}},
		{{"two.wav", "--layout", "5.1"}, "5.1", {0.5f, 0.25f, 0, 0, 0, 0}},
		{{"two.wav", "--layout", "3"}, "3 channels", {0.5f, 0.25f, 0}},
		{{"two.wav", "--channels", "2", "--pan", "0"}, "stereo", {0.25f, 0}},
		{{"one.wav", "--pan", "1", "--layout", "5.1"}, "5.1", {0, 0.5f, 0, 0, 0, 0}},
		{{"six.wav", "--layout", "stereo"}, "stereo", {0.18f, 0.24f}},
		{{"six.wav", "--layout", "mono", "--mixdown", "front"}, "mono", {0.2f}},
		{{"six.wav", "--layout", "mono", "--mixdown", "front-rear"}, "mono", {0.16375f}},
		{{"six.wav", "--layout", "mono", "--mixdown", "front-lfe"}, "mono", {0.2285707f}},
		{{"six.wav", "--layout", "mono", "--mixdown", "all"}, "mono", {0.19f}},
	};
	for (auto const& [words, layout, frame] : cases)
	{
		SCOPED_TRACE(testing::PrintToString(words));
		ProgramResult const result = Run(Join({"render", "-o", "out.wav", "--json"}, words));
		ASSERT_EQ(result.mExitCode, 0) << result.mErrors;
		auto const summary = Json::parse(result.mOutput);
		EXPECT_EQ(summary["layout"], layout);
		EXPECT_EQ(summary["channels"], frame.size());
		EXPECT_NEAR(summary["peak"].get<float>(), *std::max_element(frame.begin(), frame.end()), 1e-6f);
		EXPECT_THAT(ReadSound(mFolder / "out.wav").mSamples, Pointwise(FloatNear(1e-6f), frame));
	}
}

TEST_F(CommandTest, ClippingIsAWarningAndNoFailure)
{
	WriteSound(mFolder / "in.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, {1, 48000, {0.0f, 2.0f, -3.0f, 0.5f}});
	ProgramResult const result = Run({"render", "in.wav", "-o", "out.wav", "--bits", "24", "--quiet"});
	EXPECT_EQ(result.mExitCode, 0);
	EXPECT_THAT(result.mErrors, AllOf(StartsWith("sonaro: warning: 2 samples of 'out.wav' were clipped"),
									HasSubstr("peak 9.54 dBFS")));
}

TEST_F(CommandTest, BadInputsGiveOneLineAndNoOutput)
{
	WriteBytes(mFolder / "empty.wav", "");
	WriteBytes(mFolder / "text.wav", "This is no sound at all, only some text.\n");
	std::filesystem::create_directory(mFolder / "folder");
	WriteInput("whole.wav");
	std::string const bytes = ReadBytes(mFolder / "whole.wav");
	WriteBytes(mFolder / "cut.wav", bytes.substr(0, bytes.size() / 2));
	WriteSound(mFolder / "whole.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, MakeSound(2, 48000, 48000));
	std::string const flac = ReadBytes(mFolder / "whole.flac");
	WriteBytes(mFolder / "cut.flac", flac.substr(0, flac.size() / 2));
	Words const before = mFolder.List();

	for (char const* const command : {"render", "waveform", "info"})
	{
		for (auto const& [input, reason] :
			{std::pair("missing.wav", "does not exist"), std::pair("empty.wav", "is empty"),
				std::pair("text.wav", "not recognised"), std::pair("folder", "is a folder"),
				std::pair("cut.wav", "truncated"), std::pair("cut.flac", "truncated")})
		{
			Words words = {command, input};
			if (words[0] != "info")
			{
				words.insert(words.end(), {"-o", words[0] == "render" ? "out.wav" : "out.png"});
			}
			ExpectRefusal(words, 1, {input, reason});
		}
	}
	EXPECT_EQ(mFolder.List(), before);
}

TEST_F(CommandTest, AnUnreadableFileIsAnErrorThatSaysWhy)
{
	WriteInput();
	std::string input = "in.wav";
	std::string reason = "Permission denied";
	if (geteuid() == 0)
	{
		// Permissions do not bind this user; a link to itself binds everybody.
		std::filesystem::create_symlink("loop.wav", mFolder / "loop.wav");
		input = "loop.wav";
		reason = "Too many levels of symbolic links";
	}
	else
	{
		std::filesystem::permissions(mFolder / "in.wav", std::filesystem::perms::none);
	}
	ExpectRefusal({"render", input, "-o", "out.wav"}, 1, {input, "cannot be opened: " + reason});
	EXPECT_FALSE(std::filesystem::exists(mFolder / "out.wav"));
}

TEST_F(CommandTest, BadOutputsGiveOneLineAndLeaveNothing)
{
	Sound const sound = WriteInput();
	WriteBytes(mFolder / "old.wav", "old");
	std::filesystem::create_directory(mFolder / "folder.wav");
	ExpectRefusals({
		{1, {"render", "in.wav", "-o", "no/such/place.wav"}, {"place.wav", "does not exist", "create it"}},
		{1, {"render", "in.wav", "-o", "folder.wav"}, {"folder.wav", "is a folder"}},
		{1, {"render", "in.wav", "-o", "/dev/full", "--format", "wav"}, {"/dev/full", "regular file"}},
		{2, {"render", "in.wav", "-o", "in.wav"}, {"in.wav", "is the input itself"}},
		{2, {"render", "in.wav", "-o", "./folder.wav/../in.wav"}, {"in.wav", "is the input itself"}},
		{1, {"render", "in.wav", "-o", "old.wav", "--no-overwrite"}, {"old.wav", "already exists"}},
		{1, {"waveform", "in.wav", "-o", "no/such/place.png"}, {"place.png", "does not exist", "create it"}},
		{1, {"waveform", "in.wav", "-o", "old.wav", "--format", "png", "--no-overwrite"},
			{"old.wav", "already exists"}},
	});
	EXPECT_THAT(mFolder.List(), ElementsAre("folder.wav", "in.wav", "old.wav"));
	EXPECT_EQ(ReadBytes(mFolder / "old.wav"), "old");
	EXPECT_TRUE(SameBits(ReadSound(mFolder / "in.wav"), sound));
}

TEST_F(CommandTest, WrongOptionsOfRendersEndWith2AndOneLine)
{
	ExpectWrongOptions({"render", "in.wav", "-o", "out.wav"},
		{
			{{"--start", "-1"}, "--start: '-1'"},
			{{"--start", "soon"}, "--start: 'soon' is not a time"},
			{{"--start", "2"}, "is past its end"},
			{{"--duration", "-0:01"}, "--duration"},
			{{"--duration=-5s"}, "--duration: '-5s'"},
			{{"--channels", "0"}, "--channels: '0'"},
			{{"--channels", "1,"}, "--channels: '1,'"},
			{{"--channels", "left"}, "--channels: 'left'"},
			{{"--channels", "3"}, "has no channel 3; use 1 to 2"},
			{{"--layout", "quad"}, "--layout: 'quad' is not a layout"},
			{{"--layout", "0"}, "--layout: '0' is not a layout"},
			{{"--layout", "65"}, "from 1 to 64"},
			{{"--layout", "7.1"}, "--layout: '7.1' is not a layout"},
			{{"--pan", "left"}, "--pan: 'left' is not a number"},
			{{"--pan", "-1"}, "a pan of -1 is out of range; use 0 (left)"},
			{{"--mixdown", "rear"},
				"--mixdown: 'rear' is not valid; use front, front-rear, front-lfe or all"},
			{{"--mixdown", "all"}, "a mixdown converts 5.1 to mono or stereo"},
			{{"--block", "0"}, "--block: 0 is out of range; use 1 to 262144"},
			{{"--block", "262145"}, "--block"},
			{{"--block", "99999999999999999999"}, "--block: 99999999999999999999 is out of range"},
			{{"--jobs", "abc"}, "--jobs: 'abc' is not a whole number; use 1 to 256"},
			{{"--jobs", "1.5"}, "--jobs: '1.5' is not a whole number; use 1 to 256"},
			{{"--stream", ""}, "--stream: '' is not a whole number"},
			{{"--gain-db", ""}, "--gain-db: the value is empty; give one, or leave the option out"},
			{{"--report=", "--json"}, "--report: the value is empty; give one, or leave the option out"},
			{{"--gain-db", "loud"}, "--gain-db"},
			{{"--gain-db", "nan"}, "--gain-db: nan is out of range; use -200 to 200"},
			{{"--rate", "fast"}, "--rate: 'fast' is not a whole number"},
			{{"--speed", "0"}, "a speed of 0 is out of range; use 0.01 to 100"},
			{{"--speed", "12", "--keep-pitch"}, "a speed of 12 cannot keep its pitch; use 0.1 to 10"},
			{{"--pitch", "30"}, "a pitch of 30 semitones is out of range; use -24 to 24"},
			{{"--stretch", "other"}, "--stretch"},
			{{"--fade-in", "2"}, "the fades are longer than the 0:01.000 (48000 samples) of the output"},
			{{"--duration", "2s", "--fade-in", "3s"}, "longer than the 0:00.000 (2 samples) of"},
			{{"--bits", "20"}, "--bits"},
			{{"--dither", "tpdf"}, "dither is for 16 and 24 bits"},
			{{"--format", "mp3"}, "--format"},
			{{"-o", "again.wav"}, "--output is given more than once; give it once"},
			{{"in.wav", "--at", "0"}, "--at is given 1 time for 2 inputs"},
			{{"--at", "0", "--at", "1"}, "2 times for 1 input;"},
			{{"--at", "-1"}, "--at: '-1' is not a time"},
			{{"--at", "999999:00"}, "'in.wav' would end beyond"},
			{{"in.wav", "--start", "0"}, "--start applies only to a single input"},
			{{"in.wav", "--channels", "1"}, "--channels applies only to a single"},
			{{"in.wav", "--mixdown", "all"}, "'in.wav': a mixdown converts"},
		});
}

TEST_F(CommandTest, WaveformsAndLoudnessOfOtherSpeedsAndPitchesAreThoseOfTheRender)
{
	WriteInput();
	auto const measure = [this](Words const& inWords)
	{
		return Json::parse(
			Run(Join({"loudness", "--quiet", "--json"}, inWords)).mOutput)["inputs"][0]["integratedLufs"];
	};
	for (Words const& words : {Words{"--speed", "1.5"}, {"--speed", "0.8", "--keep-pitch", "--start", "0.1"},
			 {"--pitch", "-3", "--start", "0.2"},
			 {"--speed", "1.25", "--keep-pitch", "--pitch", "2", "--stretch", "scaler"}})
	{
		SCOPED_TRACE(testing::PrintToString(words));
		Words const part = Join(words, {"--duration", "0.7"});
		ASSERT_EQ(Run(Join({"render", "in.wav", "-o", "out.wav"}, part)).mExitCode, 0);
		ASSERT_EQ(Run(Join({"waveform", "in.wav", "-o", "heard.dat"}, part)).mExitCode, 0);
		ASSERT_EQ(Run({"waveform", "out.wav", "-o", "out.dat"}).mExitCode, 0);
		EXPECT_TRUE(ReadBytes(mFolder / "heard.dat") == ReadBytes(mFolder / "out.dat"));
		EXPECT_EQ(measure(Join({"in.wav"}, part)), measure({"out.wav"}));
	}
}

TEST_F(CommandTest, WrongOptionsOfWaveformsEndWith2AndOneLine)
{
	ExpectWrongOptions({"waveform", "in.wav", "-o", "out.png"},
		{
			{{"--format", "gif"}, "--format"},
			{{"--width", "wide"}, "--width"},
			{{"--width", "0"}, "must be at least 1"},
			{{"--width", "9", "--samples-per-column", "9"}, "--width"},
			{{"--samples-per-column", "1"}, "48000; use more samples"},
			{{"--width", "32767", "--height", "32767"},
				"is too large for a bitmap; make it smaller or write .svg"},
			{{"--height", "1"}, "2 to 32767 pixels high"},
			{{"--height", "-1"}, "--height"},
			{{"--channels", "left"}, "--channels"},
			{{"--wave", "blue"}, "--wave: 'blue' is not a colour"},
			{{"--background", "#12"}, "--background: '#12'"},
			{{"--rms", "#1234567"}, "--rms: '#1234567'"},
			{{"--scale", "log"}, "--scale"},
			{{"--scale", "db", "--floor-db", "6"}, "a floor of 6 dB is out of range"},
			{{"--floor-db", "-40"}, "needs --scale db"},
			{{"--bits", "8"}, "--bits applies only to JSON and DAT, not to PNG"},
			{{"--bits", "12", "--format", "dat"}, "--bits: '12' is not valid; use 8 or 16"},
			{{"--bits", "x", "--format", "dat"}, "--bits: 'x' is not valid; use 8 or 16"},
			{{"--height", "100", "--format", "dat"}, "--height applies only to pictures, not to DAT"},
			{{"--start", "soon"}, "--start: 'soon' is not a time"},
			{{"--speed", "0.001"}, "a speed of 0.001 is out of range; use 0.01 to 100"},
			{{"--speed", "100", "--duration", "10s"}, "there is less than one sample to draw"},
			{{"--speed", "12", "--keep-pitch"}, "a speed of 12 cannot keep its pitch; use 0.1 to 10"},
		});
}

TEST_F(CommandTest, WrongUsageEndsWith2AndOneLine)
{
	WriteInput();
	ExpectRefusals({
		{2, {"render"}, {"INPUT"}},
		{2, {"render", "in.wav"}, {"--output"}},
		{2, {"render", "in.wav", "-o"}, {"--output needs a value"}},
		{2, {"render", "in.wav", "-o", "out"}, {"cannot choose a format from the name"}},
		{2, {"render", "in.wav", "-o", "out.mp3"}, {"cannot choose a format from the name"}},
		{2, {"render", "in.wav", "-o", "out.flac", "--bits", "32f"}, {"FLAC cannot hold floats"}},
		{2, {"waveform", "in.wav"}, {"--output"}},
		{2, {"waveform", "in.wav", "-o", "out"}, {"cannot choose a format from the name"}},
		{2, {"waveform", "in.wav", "-o", "out.jpg"}, {"cannot choose a format from the name"}},
		{2, {"waveform", "in.wav", "-o", "in.wav", "--format", "png"}, {"is the input itself"}},
		{2, {"info"}, {"INPUT"}},
		{2, {"info", "in.wav", "in.wav"}, {"unexpected argument: in.wav"}},
		{2, {"graph", "edit.otio", "-o", "out.svg", "--depth", "-1"}, {"--depth: "}},
	});
	EXPECT_THAT(mFolder.List(), ElementsAre("in.wav"));
}

TEST_F(CommandTest, AFullDiskIsAnErrorAndLeavesNothing)
{
	WriteInput("in.wav", 200000);
	WriteBytes(mFolder / "out.wav", "old");
	// Below what is written before the first sample, in the middle, and where only the end is missing.
	for (unsigned long const limit : {10ul, 500000ul, 1600050ul})
	{
		mStart.mFileSizeLimit = limit;
		for (char const* const output : {"out.wav", "out.aiff", "out.caf"})
		{
			ExpectRefusal({"render", "in.wav", "-o", output}, 1, {output, "File too large"});
		}
	}
	mStart.mFileSizeLimit = 100000;
	ExpectRefusal({"render", "in.wav", "-o", "out.flac"}, 1, {"out.flac", "File too large"});
	mStart.mFileSizeLimit = 1000;
	for (char const* const output : {"out.png", "out.svg", "out.json", "out.dat"})
	{
		ExpectRefusal({"waveform", "in.wav", "-o", output}, 1, {output, "File too large"});
	}
	EXPECT_THAT(mFolder.List(), ElementsAre("in.wav", "out.wav"));
	EXPECT_EQ(ReadBytes(mFolder / "out.wav"), "old");
}

TEST_F(CommandTest, AResultThatCannotBePrintedIsAnError)
{
	WriteInput();
	mStart.mOutputFile = "/dev/full";
	ExpectRefusal({"info", "in.wav", "--json"}, 1, {"standard output", "No space left"});
	// What is complete by then is kept, and the message says so.
	WriteBytes(mFolder / "edit.otio", Timeline({Track("A1", {Clip("a", "in.wav")})}).dump());
	struct Case
	{
		Words mWords;
		std::string mOutput;
	};
	for (Case const& test : {Case{{"render", "in.wav", "-o", "out.wav", "--json"}, "out.wav"},
			 {{"render", "in.wav", "-o", "out.wav", "--quiet", "--report", "-"}, "out.wav"},
			 {{"render", "edit.otio", "-o", "out.wav", "--json"}, "out.wav"},
			 {{"render", "edit.otio", "-o", "out.wav", "--quiet", "--report", "-"}, "out.wav"},
			 {{"render", "edit.otio", "-o", "stems", "--stems", "track", "--json"}, "stems"},
			 {{"waveform", "in.wav", "-o", "out.png", "--json"}, "out.png"},
			 {{"loudness", "in.wav", "-o", "out.svg", "--json"}, "out.svg"},
			 {{"graph", "edit.otio", "-o", "out.dot"}, "out.dot"}})
	{
		SCOPED_TRACE(testing::PrintToString(test.mWords));
		ExpectRefusal(test.mWords, 1,
			{"standard output", "No space left", "; '" + test.mOutput + "' is complete and was kept"});
		EXPECT_GT(std::filesystem::remove_all(mFolder / test.mOutput), 0u);
		EXPECT_THAT(mFolder.List(), ElementsAre("edit.otio", "in.wav"));
	}
}

TEST_F(CommandTest, StandardStreamsAreLikeFiles)
{
	WriteInput();
	mStart.mInputFile = (mFolder / "in.wav").string();
	for (Words const& fromStreams :
		{Words{"render", "-", "-o", "-"}, {"render", "-", "-o", "-", "--format", "flac"},
			{"render", "-", "-", "-o", "-", "--reverse"}, {"waveform", "-", "-o", "-", "--format", "png"}})
	{
		SCOPED_TRACE(testing::PrintToString(fromStreams));
		Words fromFiles = fromStreams;
		std::replace(fromFiles.begin(), fromFiles.end(), std::string("-"), std::string("in.wav"));
		*std::next(std::find(fromFiles.begin(), fromFiles.end(), "-o")) = "out";
		bool const hasFormat = std::find(fromFiles.begin(), fromFiles.end(), "--format") != fromFiles.end();
		ASSERT_EQ(Run(Join(fromFiles, hasFormat ? Words() : Words{"--format", "wav"})).mExitCode, 0);
		ProgramResult const result = Run(fromStreams);
		EXPECT_EQ(result.mExitCode, 0);
		// The summary does not get between.
		EXPECT_THAT(result.mErrors, StartsWith("standard output: "));
		EXPECT_TRUE(result.mOutput == ReadBytes(mFolder / "out"));
	}
	EXPECT_THAT(Run({"info", "-"}).mOutput, HasSubstr("48000 samples"));
	EXPECT_THAT(mFolder.List(), ElementsAre("in.wav", "out"));
}

TEST_F(CommandTest, StandardStreamsThatCannotBeUsedAreErrors)
{
	Sound const sound = WriteInput();
	WriteBytes(mFolder / "empty", "");
	WriteBytes(mFolder / "text", "no sound");
	mStart.mInputFile = (mFolder / "in.wav").string();
	ExpectRefusal({"render", "-", "-o", "in.wav"}, 2, {"'in.wav' is the input itself"});
	ExpectRefusal({"waveform", "-", "-o", "-"}, 2, {"the standard output needs --format"});
	ExpectRefusal({"graph", "edit.otio", "-o", "-"}, 2, {"the standard output needs --format"});
	mStart.mInputFile = (mFolder / "empty").string();
	ExpectRefusal({"render", "-", "-o", "out.wav"}, 1, {"the standard input is empty"});
	mStart.mInputFile = (mFolder / "text").string();
	ExpectRefusal({"info", "-"}, 1, {"the standard input cannot be read as sound"});
	mStart.mInputFile.clear();
	mStart.mOutputFile = (mFolder / "in.wav").string();
	ExpectRefusal({"render", "in.wav", "-o", "-"}, 2, {"the standard output is the input itself"});
	mStart.mOutputFile = "/dev/full";
	ExpectRefusal({"render", "in.wav", "-o", "-"}, 1, {"cannot write the standard output: No space left"});
	mStart.mOutputFile.clear();
	mStart.mClosesOutput = true;
	ExpectRefusal({"render", "in.wav", "-o", "-"}, 1, {"cannot write the standard output: Broken pipe"});
	ExpectRefusal({"info", "in.wav"}, 1, {"standard output: Broken pipe"});
	EXPECT_THAT(mFolder.List(), ElementsAre("empty", "in.wav", "text"));
	EXPECT_TRUE(SameBits(ReadSound(mFolder / "in.wav"), sound));
}

TEST_F(CommandTest, WaveformOptionsReachTheFile)
{
	// Columns of two frames, told apart by their values in eighths of full scale.
	Sound const sound{2, 48000, {0.125f, -0.5f, 0.25f, -0.25f, 0.375f, 0, 0.5f, 0.125f}};
	WriteSound(mFolder / "in.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, sound);
	std::pair<Words, std::vector<int>> const cases[] = {
		{{"--samples-per-column", "2"}, {4096, 8192, -16384, -8192, 12288, 16384, 0, 4096}},
		{{"--samples-per-column", "2", "--bits", "8"}, {16, 32, -64, -32, 48, 64, 0, 16}},
		{{"--width", "1", "--bits", "8"}, {16, 64, -64, 16}},
		{{"--width", "1", "--bits", "8", "--channels", "merged"}, {-64, 64}},
		{{"--width", "1", "--bits", "8", "--start", "1s", "--duration", "2s"}, {32, 48, -32, 0}},
	};
	for (auto const& [options, data] : cases)
	{
		SCOPED_TRACE(testing::PrintToString(options));
		ProgramResult const result = Run(Join({"waveform", "in.wav", "-o", "out.json", "--quiet"}, options));
		EXPECT_EQ(result.mExitCode, 0);
		EXPECT_EQ(result.mOutput + result.mErrors, "");
		EXPECT_EQ(Json::parse(ReadBytes(mFolder / "out.json"))["data"], data);
	}
	ProgramResult const people = Run({"waveform", "in.wav", "-o", "out.png"});
	EXPECT_EQ(people.mErrors, "");
	EXPECT_THAT(
		people.mOutput, StartsWith("out.png: 0:00.000 (4 samples), 1200 x 240 pixels, 2 channels, PNG\n"));
	ProgramResult const machines =
		Run({"waveform", "in.wav", "-o", "out.svg", "--json", "--height", "50", "--scale", "db", "--floor-db",
			"-40", "--wave", "#ff0000", "--rms", "none", "--background", "#00000080"});
	auto const summary = Json::parse(machines.mOutput);
	EXPECT_EQ(summary["columns"], 1200);
	EXPECT_EQ(summary["height"], 50);
	EXPECT_EQ(summary["samples"], 4);
	EXPECT_EQ(summary["samplesPerColumn"], 4.0 / 1200.0);
	EXPECT_THAT(ReadBytes(mFolder / "out.svg"), HasSubstr("100%,0%,0%"));
}

TEST_F(CommandTest, AnInterruptedJobLeavesNothingAndEndsByItsSignal)
{
	// Hours of silence that take no room on the disk, rendered sample by sample: it will not end first.
	WriteSound(mFolder / "in.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, {1, 48000, std::vector<float>(100)});
	std::string bytes = ReadBytes(mFolder / "in.wav");
	constexpr std::uint32_t kBytes = 0x78000000;
	std::size_t const length = bytes.find("data") + 4;
	for (std::size_t i = 0; i < 4; ++i)
	{
		bytes[length + i] = static_cast<char>(kBytes >> 8 * i & 0xff);
	}
	WriteBytes(mFolder / "in.wav", bytes);
	std::filesystem::resize_file(mFolder / "in.wav", length + 4 + kBytes);
	WriteBytes(mFolder / "out.wav", "old");

	struct Case
	{
		Words mWords;
		// What the file in the making holds when the work is under way.
		std::uintmax_t mBytes;
		int mSignal;
	};
	Words const render = {"render", "in.wav", "-o", "out.wav", "--block", "1", "--quiet"};
	Words const waveform = {
		"waveform", "in.wav", "-o", "out.wav", "--format", "dat", "--samples-per-column", "100", "--quiet"};
	Case const cases[] = {
		{render, 10001, SIGINT}, {render, 10001, SIGTERM}, {render, 10001, SIGHUP}, {waveform, 0, SIGINT}};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(testing::PrintToString(test.mWords) + " by " + std::to_string(test.mSignal));
		bool wasAtWork = false;
		auto const interrupt = [&](int inProcess)
		{
			// Not for ever, should it never come that far.
			for (int tries = 0; !wasAtWork && tries < 6000; ++tries)
			{
				std::this_thread::sleep_for(std::chrono::milliseconds(5));
				for (std::string const& name : mFolder.List())
				{
					std::error_code error;
					std::uintmax_t const size = std::filesystem::file_size(mFolder / name, error);
					wasAtWork = wasAtWork || (name.starts_with(".") && !error && size >= test.mBytes);
				}
			}
			kill(inProcess, test.mSignal);
		};
		ProgramResult const result = Run(test.mWords, interrupt);
		EXPECT_TRUE(wasAtWork);
		EXPECT_EQ(result.mSignal, test.mSignal);
		EXPECT_THAT(mFolder.List(), ElementsAre("in.wav", "out.wav"));
		EXPECT_EQ(ReadBytes(mFolder / "out.wav"), "old");
	}
}

TEST_F(CommandTest, LimitsOfTheShellAreMet)
{
	WriteSound(mFolder / "in.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, MakeSound(1, 48000, 100));
	WriteSound(mFolder / "in.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS, MakeSound(1, 48000, 9000));
	std::string inputs;
	for (int number = 0; number < 70; ++number)
	{
		std::string const name = std::to_string(number) + ".wav";
		std::filesystem::create_hard_link(mFolder / "in.wav", mFolder / name);
		inputs += " " + name;
	}
	auto const runInShell = [&](std::string const& inBefore, std::string const& inArguments)
	{
		ProgramStart start;
		start.mFolder = mFolder.Get().string();
		start.mArguments = {"-c", inBefore + " '" SONARO_COMMAND "' " + inArguments};
		return RunProgram("/bin/sh", start);
	};
	ProgramResult result = runInShell("ulimit -S -n 60; exec", "render" + inputs + " -o out.wav");
	EXPECT_EQ(result.mExitCode, 0) << result.mErrors;
	// The sanitizer of undefined behaviour opens a pipe to look at an exception's type, and takes it for damaged
	// where no file can be opened any more.
#ifndef SONARO_SANITIZES_UNDEFINED
	result = runInShell("ulimit -n 60; exec", "render" + inputs + " -o out.wav");
	EXPECT_EQ(result.mExitCode, 1);
	EXPECT_THAT(result.mErrors, HasSubstr(".wav': cannot be opened: Too many open files; raise the limit"));
#endif
	result = runInShell("TMPDIR= exec", "render in.ogg -o out.wav --reverse");
	EXPECT_EQ(result.mExitCode, 0) << result.mErrors;
	result = runInShell("TMPDIR=/no/folder exec", "render in.ogg -o out.wav --reverse");
	EXPECT_EQ(result.mExitCode, 1);
	EXPECT_THAT(result.mErrors, HasSubstr("in a temporary file in '/no/folder': No such file"));
}

} // namespace SonaroHost::Testing::CommandTest
