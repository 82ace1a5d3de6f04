// Runs "sonaro loudness", as a shell does.

#include "MarkupCheck.h"
#include "Movies.h"
#include "ProgramRun.h"
#include "SonaroHost/Metering/LoudnessMeter.h"
#include "TimelineJson.h"

#include <gmock/gmock.h>

#include <cmath>
#include <csignal>
#include <cstdlib>
#include <limits>
#include <map>
#include <numbers>
#include <regex>

namespace SonaroHost::Testing::LoudnessCommandTest
{

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

constexpr int kRate = 48000;
constexpr int kFloatWav = SF_FORMAT_WAV | SF_FORMAT_FLOAT;

// 1 kHz in both channels: as many LUFS as dBFS.
Sound MakeTone(double inSeconds, double inDecibels)
{
	Sound tone{2, kRate, {}};
	for (int i = 0; i < std::lround(inSeconds * kRate); ++i)
	{
		auto const sample = static_cast<float>(
			std::pow(10.0, inDecibels / 20.0) * std::sin(2.0 * std::numbers::pi * i / 48.0));
		tone.mSamples.insert(tone.mSamples.end(), {sample, sample});
	}
	return tone;
}

class LoudnessCommandTest : public ProgramTest
{
protected:
	void SetUp() override
	{
		Sound sound = MakeTone(4.0, -33.0);
		Sound const loud = MakeTone(4.0, -23.0);
		sound.mSamples.insert(sound.mSamples.end(), loud.mSamples.begin(), loud.mSamples.end());
		WriteSound(mFolder / "tone.wav", kFloatWav, sound);
		WriteSound(mFolder / "noise.wav", kFloatWav, MakeSound(2, kRate, 4 * kRate));
		WriteSound(mFolder / "silent.wav", kFloatWav, {2, kRate, std::vector<float>(2 * kRate)});
		WriteSound(mFolder / "short.wav", kFloatWav, MakeTone(0.3, -23.0));
		WriteSound(mFolder / "quiet.wav", kFloatWav, MakeTone(2.0, -90.0));
		Sound late{2, kRate, std::vector<float>(2 * 30000)};
		late.mSamples.insert(late.mSamples.end(), loud.mSamples.begin(), loud.mSamples.begin() + 2 * 3000);
		WriteSound(mFolder / "late.wav", kFloatWav, late);
		WriteSound(mFolder / "loud.wav", kFloatWav, MakeTone(1.0, 29.0));
		Sound faulty = loud;
		faulty.mSamples[100] = 1.0e30f;
		faulty.mSamples[101] = std::numeric_limits<float>::infinity();
		WriteSound(mFolder / "faulty.wav", kFloatWav, faulty);
		WriteBytes(mFolder / "text.wav", "no sound");
		WriteBytes(mFolder / "edit.otio",
			WithSettings(Timeline({Track("A", {Clip("tone", "tone.wav", 0.0, 8.0)}),
							 Track("B", {Gap(1.0), Clip("noise", "noise.wav", 0.0, 3.0)})}),
				{{"layout", "stereo"}})
				.dump());
		WriteBytes(mFolder / "missing.otio",
			Timeline({Track("A", {Clip("tone", "tone.wav", 4.0, 4.0)}), Track("B", {Clip("x", "gone.wav")})})
				.dump());
	}

	Json Measure(Words const& inWords, int inExitCode = 0)
	{
		ProgramResult const result = Run(Join({"loudness", "--json", "--quiet"}, inWords));
		EXPECT_EQ(result.mExitCode, inExitCode) << result.mErrors;
		return Json::parse(result.mOutput)["inputs"];
	}
};

TEST_F(LoudnessCommandTest, TonesMeasureAsTheyAre)
{
	Json const tone = Measure({"tone.wav"})[0];
	// The mean of both halves' powers.
	EXPECT_NEAR(tone["integratedLufs"].get<double>(), -25.6, 0.1);
	EXPECT_NEAR(tone["rangeLu"].get<double>(), 10.0, 0.5);
	EXPECT_NEAR(tone["momentaryMaximum"]["lufs"].get<double>(), -23.0, 0.1);
	EXPECT_NEAR(tone["momentaryMaximum"]["seconds"].get<double>(), 4.4, 0.02);
	EXPECT_NEAR(tone["shortTermMaximum"]["lufs"].get<double>(), -23.0, 0.1);
	EXPECT_NEAR(tone["shortTermMaximum"]["seconds"].get<double>(), 7.0, 0.02);
	EXPECT_NEAR(tone["truePeakDbtp"].get<double>(), -23.0, 0.1);
	EXPECT_THAT(Run({"loudness", "tone.wav"}).mOutput,
		AllOf(HasSubstr("tone.wav: 0:08.000, stereo, 48000 Hz\n"),
			HasSubstr("Momentary   -23.0 LUFS at most, at 0:04."), HasSubstr("True peak   -23.0")));
	// The quiet half, and the loud one.
	EXPECT_NEAR(Measure({"tone.wav", "--duration", "4"})[0]["integratedLufs"].get<double>(), -33.0, 0.1);
	EXPECT_NEAR(Measure({"tone.wav", "--start", "4"})[0]["integratedLufs"].get<double>(), -23.0, 0.1);
	EXPECT_NEAR(Measure({"missing.otio"}, 3)[0]["integratedLufs"].get<double>(), -23.0, 0.1);
}

TEST_F(LoudnessCommandTest, ValuesAreThoseThatARenderReports)
{
	struct Case
	{
		char const* mInput;
		Words mPart;
	};
	for (Case const& test :
		{Case{"noise.wav", {}}, {"faulty.wav", {}}, {"noise.wav", {"--start", "1", "--duration", "2"}},
			{"edit.otio", {}}, {"edit.otio", {"--range", "0.5..4"}}})
	{
		SCOPED_TRACE(test.mInput);
		ASSERT_EQ(
			Run(Join({"render", test.mInput, "-o", "out.wav", "--report", "out.json"}, test.mPart)).mExitCode,
			0);
		Json const written = Json::parse(ReadBytes(mFolder / "out.json"))["outputs"][0];
		bool const isFaulty = std::string(test.mInput) == "faulty.wav";
		EXPECT_EQ(written.value("leftOutSamples", 0), isFaulty ? 2 : 0);
		EXPECT_NEAR(ToDecibels(written["peak"]), written["peakDbfs"].get<double>(), 1.0e-6);
		EXPECT_EQ(written["peak"] > 1.0e29, isFaulty);
		for (Json const& measured : {Measure(Join({test.mInput}, test.mPart))[0], Measure({"out.wav"})[0]})
		{
			for (char const* const key : {"integratedLufs", "truePeakDbtp", "peakDbfs", "samples", "layout"})
			{
				EXPECT_EQ(measured[key], written[key]) << key;
			}
		}
	}
}

TEST_F(LoudnessCommandTest, PlotsHaveTheirColoursInProgramsWithoutVariables)
{
	ASSERT_EQ(Run({"loudness", "tone.wav", "-o", "plot.svg"}).mExitCode, 0);
	std::string const plot = ReadBytes(mFolder / "plot.svg");
	// A plain colour goes before each variable, which has the same one to fall back on.
	std::regex const variable("([a-z]+:)?(#[0-9a-f]{6};)?([a-z]+:)var\\(--[a-z-]+(,#[0-9a-f]{6})?\\)");
	int variables = 0;
	for (auto found = std::sregex_iterator(plot.begin(), plot.end(), variable);
		 found != std::sregex_iterator(); ++found, ++variables)
	{
		EXPECT_EQ(found->str(1), found->str(3)) << found->str();
		EXPECT_EQ("," + found->str(2), found->str(4) + ";") << found->str();
	}
	EXPECT_GT(variables, 6);
	if (std::system("rsvg-convert --version > /dev/null 2>&1") != 0)
	{
		GTEST_SKIP() << "rsvg-convert is not installed";
	}
	std::string const folder = mFolder.Get().string();
	ASSERT_EQ(std::system(("rsvg-convert " + folder + "/plot.svg -o " + folder + "/plot.png").c_str()), 0);
	RunFfmpeg("-i " + folder + "/plot.png -f rawvideo -pix_fmt rgb24 " + folder + "/plot.rgb");
	std::string const pixels = ReadBytes(mFolder / "plot.rgb");
	std::map<std::string, std::size_t> counts;
	for (std::size_t i = 0; i + 3 <= pixels.size(); i += 3)
	{
		++counts[pixels.substr(i, 3)];
	}
	EXPECT_GT(counts["\xff\xff\xff"], pixels.size() / 3 * 8 / 10);
	for (char const* const curve : {"\x07\x57\xba", "\xb3\x26\x1e"})
	{
		EXPECT_GT(counts[curve], 20u);
	}
	EXPECT_EQ(counts[std::string(3, '\0')], 0u);
}

TEST_F(LoudnessCommandTest, WhatCannotBeMeasuredLeavesTheOthers)
{
	ProgramResult const result = Run({"loudness", "silent.wav", "text.wav", "tone.wav", "gone.wav",
		"short.wav", "quiet.wav", "late.wav", "faulty.wav", "-o", "plot.svg"});
	EXPECT_EQ(result.mExitCode, 1);
	for (char const* const text : {"'silent.wav' is silent", "'text.wav'", "'gone.wav'",
			 "'short.wav' is too short for its loudness to be measured: 0:00.300", "'quiet.wav' is too quiet",
			 "'late.wav' is too quiet for its loudness to be measured: no block of 0.4 seconds",
			 "the loudness of 'faulty.wav' leaves out 2 samples"})
	{
		EXPECT_THAT(result.mErrors, HasSubstr(text));
	}
	EXPECT_THAT(result.mOutput, testing::ContainsRegex("-25\\.6 +10\\.. +-23\\.0 .*  tone.wav\n"));
	EXPECT_THAT(result.mOutput, testing::ContainsRegex("- +- +- +- +- +- +- +- +silent.wav\n"));
	EXPECT_THAT(ReadBytes(mFolder / "plot.svg"),
		AllOf(HasSubstr("tone.wav"), HasSubstr(">silent.wav<"), HasSubstr("This input is silent, so"),
			HasSubstr("This input is too short"), Not(HasSubstr("gone.wav"))));

	EXPECT_THAT(Run({"render", "faulty.wav", "-o", "out.wav", "--quiet"}).mErrors,
		HasSubstr("2 samples of 'out.wav' are infinite, not a number or above +240 dBFS"));

	Json const list = Measure({"silent.wav", "gone.wav", "tone.wav"}, 1);
	ASSERT_EQ(list.size(), 2u);
	EXPECT_EQ(list[0]["integratedLufs"], "-inf");
	EXPECT_EQ(list[0]["rangeLu"], Json());
	EXPECT_THAT(list[0]["problem"].get<std::string>(), HasSubstr("silent"));
	EXPECT_FALSE(list[1].contains("problem"));

	EXPECT_EQ(Run({"loudness", "silent.wav", "short.wav", "-o", "none.svg"}).mExitCode, 1);
	EXPECT_FALSE(std::filesystem::exists(mFolder / "none.svg"));
	ExpectRefusal({"loudness", "text.wav"}, 1, {"'text.wav'", "loudness accepts sound files"});
}

TEST_F(LoudnessCommandTest, OptionsThatMakeNoSenseAreRefused)
{
	WriteBytes(mFolder / "old.svg", "old");
	ExpectRefusals({
		{2, {"loudness", "tone.wav", "noise.wav", "--start", "1"},
			{"--start applies only to a single input"}},
		{2, {"loudness", "edit.otio", "--start", "1"}, {"--start applies only to sound files", "--range"}},
		{2, {"loudness", "tone.wav", "--range", "1..2"}, {"--range applies only to timelines"}},
		{2, {"loudness", "tone.wav", "-o", "plot.png"}, {"'plot.png'", "end it in .svg"}},
		{1, {"loudness", "tone.wav", "-o", "old.svg", "--no-overwrite"}, {"'old.svg'", "exists"}},
		{1, {"loudness", "tone.wav", "-o", "no/plot.svg"}, {"'no/plot.svg'"}},
		{2, {"loudness"}, {"INPUT"}},
	});
	EXPECT_EQ(ReadBytes(mFolder / "old.svg"), "old");
}

TEST_F(LoudnessCommandTest, PlotsAreSvgWhateverTheFilesAreCalled)
{
	constexpr char const* kName = "<b onload=\"x\">&'.wav";
	std::filesystem::copy_file(mFolder / "tone.wav", mFolder / kName);
	ProgramResult const result = Run({"loudness", kName, "noise.wav", "-o", "-", "--json"});
	EXPECT_EQ(result.mExitCode, 0) << result.mErrors;
	ExpectMarkup(result.mOutput, {"svg", "style", "rect", "g", "text", "line", "path"});
	EXPECT_THAT(result.mOutput, AllOf(HasSubstr("&lt;b onload=&quot;x&quot;&gt;&amp;&#39;.wav"),
									HasSubstr("LUFS"), HasSubstr("short-term"), HasSubstr("0:05")));
	EXPECT_EQ(Json::parse(result.mErrors)["inputs"].size(), 2u);
	// The scale holds what is beyond full scale.
	std::string const loud = Run({"loudness", "loud.wav", "tone.wav", "-o", "-", "--json"}).mOutput;
	EXPECT_THAT(loud, AllOf(HasSubstr(">30</text>"), HasSubstr(">-42</text>"), Not(HasSubstr(">36</text>"))));
}

TEST_F(LoudnessCommandTest, AnInterruptLeavesNothingBehind)
{
	WriteSound(mFolder / "long.wav", kFloatWav, Sound{8, kRate, std::vector<float>(8 * 120 * kRate, 0.1f)});
	std::size_t const before = mFolder.List().size();
	ProgramResult const result =
		Run({"loudness", "long.wav", "-o", "plot.svg"}, [](int inProcess) { kill(inProcess, SIGINT); });
	EXPECT_EQ(result.mSignal, SIGINT) << result.mErrors;
	EXPECT_EQ(mFolder.List().size(), before);
}

} // namespace SonaroHost::Testing::LoudnessCommandTest
