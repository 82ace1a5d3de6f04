// Runs the real program on timelines, as a shell does.

#include "Media.h"
#include "ProgramRun.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Metering/LoudnessMeter.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <csignal>
#include <cstdlib>
#include <random>
#include <set>
#include <sstream>
#include <thread>

namespace SonaroHost::Testing
{
namespace
{

using testing::Contains;
using testing::HasSubstr;
using Json = nlohmann::json;
using Words = std::vector<std::string>;

constexpr int kRate = 48000;

Json Time(double inSeconds)
{
	return {{"OTIO_SCHEMA", "RationalTime.1"}, {"value", inSeconds * 25.0}, {"rate", 25.0}};
}

Json Range(double inStart, double inSeconds)
{
	return {{"OTIO_SCHEMA", "TimeRange.1"}, {"start_time", Time(inStart)}, {"duration", Time(inSeconds)}};
}

Json Clip(std::string const& inName, std::string const& inMedia, double inStart, double inSeconds)
{
	return {{"OTIO_SCHEMA", "Clip.1"}, {"name", inName}, {"source_range", Range(inStart, inSeconds)},
		{"media_reference", {{"OTIO_SCHEMA", "ExternalReference.1"}, {"target_url", inMedia}}}};
}

Json Gap(double inSeconds)
{
	return {{"OTIO_SCHEMA", "Gap.1"}, {"source_range", Range(0.0, inSeconds)}};
}

// Compilers differ on what a list of one value in braces is.
Json List(std::initializer_list<Json> inValues)
{
	Json list = Json::array();
	for (Json const& value : inValues)
	{
		list.push_back(value);
	}
	return list;
}

Json Track(std::string const& inName, std::initializer_list<Json> inChildren, double inGain = 0.0)
{
	return {{"OTIO_SCHEMA", "Track.1"}, {"name", inName}, {"kind", "Audio"}, {"children", List(inChildren)},
		{"metadata", {{"sonaro", {{"gain", inGain}}}}}};
}

Json Marker(std::string const& inName, double inStart, double inSeconds)
{
	return {{"OTIO_SCHEMA", "Marker.2"}, {"name", inName}, {"marked_range", Range(inStart, inSeconds)}};
}

class TimelineCommandTest : public testing::Test
{
protected:
	void SetUp() override
	{
		WriteSound(mFolder / "tone.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, MakeSound(2, kRate, 4 * kRate));
		Sound impulse{1, kRate, std::vector<float>(2 * kRate)};
		impulse.mSamples[kImpulse] = 0.5f;
		WriteSound(mFolder / "impulse.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, impulse);
	}

	void WriteTimeline(std::string const& inName, std::initializer_list<Json> inTracks,
		std::initializer_list<Json> inMarkers = {})
	{
		Json const timeline = {{"OTIO_SCHEMA", "Timeline.1"}, {"name", "test"},
			{"global_start_time", Time(36000.0)}, {"metadata", {{"sonaro", {{"layout", "stereo"}}}}},
			{"tracks",
				{{"OTIO_SCHEMA", "Stack.1"}, {"children", List(inTracks)}, {"markers", List(inMarkers)}}}};
		WriteBytes(mFolder / inName, timeline.dump());
	}

	// Tone under impulses, three seconds long.
	void WriteEdit()
	{
		WriteTimeline("edit.otio",
			{Track("Tone", {Clip("first", "tone.wav", 0.0, 1.6), Clip("second", "tone.wav", 2.0, 1.4)}, -6.0),
				Track("Impulse/s", {Gap(1.0), Clip("click", "impulse.wav", 0.2, 1.0)})},
			{Marker("Verse", 0.4, 0.8), Marker("Point", 1.0, 0.0), Marker("End", 2.0, 1.0)});
	}

	ProgramResult Run(Words const& inArguments, std::function<void(int)> const& inMeanwhile = {})
	{
		mStart.mArguments = inArguments;
		mStart.mFolder = mFolder.Get().string();
		return RunProgram(SONARO_COMMAND, mStart, inMeanwhile);
	}

	Sound Render(Words inOptions, std::string const& inOutput = "out.wav")
	{
		inOptions.insert(inOptions.begin(), {"render", "edit.otio", "-o", inOutput});
		ProgramResult const result = Run(inOptions);
		EXPECT_EQ(result.mExitCode, 0) << result.mErrors;
		return std::filesystem::is_directory(mFolder / inOutput) ? Sound() : ReadSound(mFolder / inOutput);
	}

	// Of out.wav.
	bool HasTemporaryFile() const
	{
		std::vector<std::string> const names = mFolder.List();
		return std::any_of(names.begin(), names.end(),
			[](std::string const& inName) { return inName.starts_with(".out.wav.sonaro-"); });
	}

	// Of a sound file.
	Sound RenderFile(std::string const& inFile, Words inOptions)
	{
		inOptions.insert(inOptions.begin(), {"render", inFile, "-o", "file.wav", "--quiet"});
		ProgramResult const result = Run(inOptions);
		EXPECT_EQ(result.mExitCode, 0) << result.mErrors;
		return ReadSound(mFolder / "file.wav");
	}

	static constexpr std::size_t kImpulse = 20000;

	TemporaryFolder mFolder;
	ProgramStart mStart;
};

LoudnessReading Measure(Sound const& inSound)
{
	LoudnessMeter meter(MakeLayoutOfChannels(static_cast<unsigned>(inSound.mChannels)), inSound.mSampleRate,
		LoudnessMeter::Memory::eGrowing);
	dsp::AudioBuffer block(
		static_cast<unsigned>(inSound.mChannels), static_cast<unsigned>(inSound.GetFrames()));
	for (std::size_t i = 0; i < inSound.mSamples.size(); ++i)
	{
		auto const channels = static_cast<std::size_t>(inSound.mChannels);
		block.GetChannel(i % channels)[i / channels] = inSound.mSamples[i];
	}
	meter.Add(block);
	return meter.GetReading();
}

TEST_F(TimelineCommandTest, ExitCodesTellWhatBecameOfIt)
{
	WriteEdit();
	WriteTimeline("missing.otio", {Track("Dialogue", {Clip("Take 3", "gone.wav", 0.0, 1.0)}),
									  Track("Tone", {Clip("first", "tone.wav", 0.0, 1.0)})});
	WriteTimeline("hour.otio", {Track("Tone", {Clip("first", "tone.wav", 0.0, 1.0)}),
								   Track("Dialogue", {Clip("Take 4", "tone.wav", 3600.0, 2.0)})});
	Json odd = Track("Tone", {Clip("first", "tone.wav", 0.0, 1.0)});
	odd["metadata"]["sonaro"]["gian"] = 3;
	WriteTimeline("odd.otio", {odd});
	struct Case
	{
		Words mWords;
		int mExitCode;
		std::vector<std::string> mTexts;
	};
	Case const cases[] = {
		{{"edit.otio"}, 0, {}},
		{{"edit.otio", "--strict"}, 0, {}},
		{{"missing.otio"}, 3, {"Take 3", "Dialogue", "gone.wav", "silent"}},
		{{"missing.otio", "--strict"}, 1, {"--strict", "1 clips have no media"}},
		{{"hour.otio"}, 3,
			{"Take 4", "Dialogue", "tone.wav", "0:00.000 to 0:04.000", "1:00:00.000 to 1:00:02.000"}},
		{{"hour.otio", "--strict"}, 1, {"--strict", "1 clips have no media"}},
		{{"odd.otio"}, 0, {"gian", "/tracks/children/0"}},
		{{"odd.otio", "--strict"}, 1, {"--strict"}},
		{{"odd.otio", "--strict=some"}, 2, {"some", "--strict=media"}},
		{{"edit.otio", "--gain-db", "-3", "--normalize", "-16"}, 2, {"gain", "loudness"}},
		{{"tone.wav", "--gain-db", "-3", "--normalize", "-16"}, 2, {"gain", "loudness"}},
		{{"tone.wav", "--normalize", "1"}, 2, {"-70", "LUFS"}},
		{{"tone.wav", "--limit-dbtp", "nan"}, 2, {"dBTP"}},
		{{"edit.otio", "--gain-db", "201"}, 2, {"--gain-db"}},
		{{"edit.otio", "--range", "1..2", "--fade-in", "0.6", "--fade-out", "0.6"}, 2, {"fades", "0:01.000"}},
		{{"edit.otio", "--stems", "marker", "--fade-in", "0.9"}, 2, {"fades", "0:00.800", "Verse"}},
		{{"none.otio"}, 1, {"none.otio"}},
		{{"edit.otio", "--media", "gone/folder"}, 2, {"'gone/folder'", "does not exist"}},
		{{"edit.otio", "--media", "tone.wav"}, 2, {"'tone.wav'", "is no folder"}},
		{{"edit.otio", "tone.wav"}, 2, {"edit.otio", "timeline"}},
		{{"edit.otio", "--speed", "2"}, 2, {"--speed"}},
		{{"edit.otio", "--start", "1"}, 2, {"--start", "--range"}},
		{{"tone.wav", "--stems", "track"}, 2, {"--stems"}},
		{{"edit.otio", "--range", "Chorus"}, 2, {"Chorus"}},
		{{"edit.otio", "--range", "5..6"}, 2, {"5..6"}},
		{{"edit.otio", "--range", "10:00:01:25+1"}, 2, {"10:00:01:25"}},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(testing::PrintToString(test.mWords));
		Words words = {"render", "-o", "new.wav", "--quiet"};
		words.insert(words.end(), test.mWords.begin(), test.mWords.end());
		ProgramResult const result = Run(words);
		EXPECT_EQ(result.mExitCode, test.mExitCode) << result.mErrors;
		EXPECT_EQ(result.mErrors.empty(), test.mTexts.empty()) << result.mErrors;
		for (std::string const& text : test.mTexts)
		{
			EXPECT_THAT(result.mErrors, HasSubstr(text));
		}
		bool const isWritten = test.mExitCode == 0 || test.mExitCode == 3;
		EXPECT_EQ(std::filesystem::remove(mFolder / "new.wav"), isWritten);
	}
}

TEST_F(TimelineCommandTest, LevelsThatAreNotReadStandFirstAndAreCounted)
{
	// More than are listed for one text.
	constexpr int kClips = 25;
	Json track = Track("Tone", {Clip("lost", "gone.wav", 0.0, 0.04)});
	track["metadata"]["sonaro"]["gian"] = 3;
	for (int i = 0; i < kClips; ++i)
	{
		Json clip = Clip("clip", "tone.wav", 0.0, 0.04);
		clip["effects"] = List({{{"OTIO_SCHEMA", "Effect.1"}, {"metadata", {{"gain", "loud"}}}}});
		track["children"].push_back(clip);
	}
	WriteTimeline("levels.otio", {track});
	ProgramResult const told = Run({"render", "levels.otio", "-o", "out.wav"});
	EXPECT_EQ(told.mExitCode, 3);
	EXPECT_THAT(told.mErrors, testing::StartsWith("sonaro: warning: level not read: "));
	EXPECT_THAT(told.mOutput, HasSubstr("25 levels of other programs not read"));
	ProgramResult const summary = Run({"render", "levels.otio", "-o", "out.wav", "--json"});
	Json const json = Json::parse(summary.mOutput);
	EXPECT_EQ(json["levelsNotRead"], kClips);
	EXPECT_EQ(json["notes"].front()["kind"], "level not read");
	EXPECT_EQ(json["notes"].back()["kind"] == "level not read", false);

	track["children"].erase(0);
	track["metadata"]["sonaro"].erase("gian");
	WriteTimeline("levels.otio", {track});
	EXPECT_EQ(Run({"render", "levels.otio", "-o", "out.wav"}).mExitCode, 0);
	EXPECT_EQ(Run({"render", "levels.otio", "-o", "out.wav", "--strict"}).mExitCode, 1);
}

TEST_F(TimelineCommandTest, WhatHasNothingToBeHeardIsRefusedWithTheReason)
{
	auto const with = [](Json inObject, Json const& inFields)
	{
		inObject.update(inFields);
		return inObject;
	};
	Json const clip = Clip("first", "tone.wav", 0.0, 1.0);
	Json const pictures = with(Track("Pictures", {clip}), {{"kind", "Video"}});
	Json const muted = Json::parse(R"({"metadata": {"sonaro": {"mute": true}}})");
	Json const stack = {
		{"OTIO_SCHEMA", "Stack.1"}, {"children", List({Track("A1", {clip})})}, {"enabled", false}};
	Json const generator = with(clip, {{"media_reference", {{"OTIO_SCHEMA", "GeneratorReference.1"}}}});
	struct Case
	{
		std::string mWhy;
		Json mTracks;
	};
	Case const cases[] = {
		{"2 tracks of kind Video, none of kind Audio", List({pictures, pictures})},
		{"1 track of kind Video, 1 track of kind 'Subtitle', none of kind Audio",
			List({pictures, with(pictures, {{"kind", "Subtitle"}})})},
		{"1 track of kind Video, 1 track of kind Audio (muted), 1 stack (disabled)",
			List({pictures, with(Track("A1", {clip}), muted), stack})},
		{"1 track of kind Audio without clips", List({Track("A1", {Gap(1.0)})})},
		{"1 track of kind Audio with 2 clips (disabled), 1 clip (what a generator would make is not "
		 "rendered)",
			List({Track(
				"A1", {with(clip, {{"enabled", false}}), with(clip, {{"enabled", false}}), generator})})},
		{"1 track of kind Audio with 1 clip (cut away by what it stands in, or has no length)",
			List({with(Track("A1", {Gap(1.0), clip}), {{"source_range", Range(0.0, 0.5)}})})},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mWhy);
		WriteTimeline("silent.otio", {});
		Json timeline = Json::parse(ReadBytes(mFolder / "silent.otio"));
		timeline["tracks"]["children"] = test.mTracks;
		WriteBytes(mFolder / "silent.otio", timeline.dump());
		for (Words const& words : {Words{"render", "silent.otio", "-o", "new.wav", "--report", "new.json"},
				 Words{"render", "silent.otio", "-o", "new", "--stems", "track"},
				 Words{"waveform", "silent.otio", "-o", "new.svg"},
				 Words{"graph", "silent.otio", "-o", "new.dot"}})
		{
			ProgramResult const result = Run(words);
			EXPECT_EQ(result.mExitCode, 3);
			EXPECT_THAT(result.mErrors, HasSubstr("silent.otio"));
			EXPECT_THAT(result.mErrors, HasSubstr("nothing in this timeline is heard: " + test.mWhy + "\n"));
		}
		EXPECT_EQ(mFolder.List(), (Words{"impulse.wav", "silent.otio", "tone.wav"}));
		ProgramResult const info = Run({"info", "silent.otio", "--json"});
		EXPECT_EQ(info.mExitCode, 3);
		EXPECT_EQ(Json::parse(info.mOutput)["refusal"]["reason"],
			"nothing in this timeline is heard: " + test.mWhy);
	}
}

TEST_F(TimelineCommandTest, AMediaFolderThatIsNotThereIsRefusedByEveryCommand)
{
	WriteEdit();
	for (Words words : {Words{"render", "edit.otio", "-o", "new.wav"}, Words{"info", "edit.otio"},
			 Words{"waveform", "edit.otio", "-o", "new.svg"}, Words{"graph", "edit.otio", "-o", "new.dot"}})
	{
		SCOPED_TRACE(words.front());
		words.insert(words.end(), {"--media", ".", "--media", "gone"});
		ProgramResult const result = Run(words);
		EXPECT_EQ(result.mExitCode, 2);
		EXPECT_THAT(result.mErrors, HasSubstr("'gone': the folder of media does not exist"));
		EXPECT_EQ(mFolder.List(), (Words{"edit.otio", "impulse.wav", "tone.wav"}));
	}
}

TEST_F(TimelineCommandTest, ARangeIsACutOfTheWhole)
{
	WriteEdit();
	Sound const whole = Render({"--quiet"});
	struct Case
	{
		std::string mRange;
		double mStart;
		double mEnd;
	};
	Case const cases[] = {
		{"0.5..1.75", 0.5, 1.75},
		{"1+0:01", 1.0, 2.0},
		{"10:00:01:05..10:00:02:00", 1.2, 2.0},
		{"10:00:00:13+00:00:01:00", 0.52, 1.52},
		{"24000s+100:00", 0.5, 3.0},
		{"Verse", 0.4, 1.2},
		{"Point", 1.0, 2.0},
		{"Verse..End", 0.4, 2.0},
		{"Point..", 1.0, 3.0},
		{"..10:00:02:00", 0.0, 2.0},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mRange);
		auto const first = static_cast<std::int64_t>(std::lround(test.mStart * kRate));
		auto const frames = static_cast<std::int64_t>(std::lround(test.mEnd * kRate)) - first;
		EXPECT_TRUE(SameBits(Render({"--range", test.mRange, "--quiet"}), whole.Cut(first, frames)));
	}
}

TEST_F(TimelineCommandTest, StemsAddUpToTheMixWhateverBecomesOfIt)
{
	WriteEdit();
	for (Words const& levels : {Words{"--normalize", "-20"},
			 {"--gain-db", "-3", "--fade-in", "0.5", "--fade-out", "0.7", "--range", "0.3.."}})
	{
		SCOPED_TRACE(testing::PrintToString(levels));
		Words words = {"--quiet"};
		words.insert(words.end(), levels.begin(), levels.end());
		Sound const mix = Render(words);
		words.insert(words.end(), {"--stems", "track"});
		Render(words, "stems");
		Sound const tone = ReadSound(mFolder / "stems" / "01 Tone.wav");
		Sound const impulse = ReadSound(mFolder / "stems" / "02 Impulse_s.wav");
		ASSERT_EQ(tone.mSamples.size(), mix.mSamples.size());
		ASSERT_EQ(impulse.mSamples.size(), mix.mSamples.size());
		for (std::size_t i = 0; i < mix.mSamples.size(); ++i)
		{
			ASSERT_NEAR(tone.mSamples[i] + impulse.mSamples[i], mix.mSamples[i], 1e-6f) << i;
		}
	}
}

TEST_F(TimelineCommandTest, EachMarkerNamesAPartOfTheMix)
{
	WriteEdit();
	Sound const mix = Render({"--quiet", "--normalize", "-20"});
	Render({"--quiet", "--normalize", "-20", "--stems", "marker"}, "parts");
	Render({"--quiet", "--normalize", "-20", "--stems", "marker", "--fade-in", "0.2", "--fade-out", "0.3"},
		"faded");
	struct Case
	{
		char const* mFile;
		double mStart;
		double mEnd;
	};
	for (Case const& test :
		{Case{"01 Verse.wav", 0.4, 1.2}, {"02 Point.wav", 1.0, 2.0}, {"03 End.wav", 2.0, 3.0}})
	{
		SCOPED_TRACE(test.mFile);
		auto const first = static_cast<std::int64_t>(std::lround(test.mStart * kRate));
		auto const end = static_cast<std::int64_t>(std::lround(test.mEnd * kRate));
		EXPECT_TRUE(SameBits(ReadSound(mFolder / "parts" / test.mFile), mix.Cut(first, end - first)));
		// The gain of normalizing comes after the fades of the one and before those of the other.
		Sound const faded = ReadSound(mFolder / "faded" / test.mFile);
		Sound const expected =
			RenderFile(std::string("parts/") + test.mFile, {"--fade-in", "0.2", "--fade-out", "0.3"});
		ASSERT_EQ(faded.mSamples.size(), expected.mSamples.size());
		for (std::size_t i = 0; i < faded.mSamples.size(); ++i)
		{
			ASSERT_NEAR(faded.mSamples[i], expected.mSamples[i], 1e-6f) << i;
		}
	}
	EXPECT_EQ(std::distance(std::filesystem::directory_iterator(mFolder / "parts"), {}), 3);
}

TEST_F(TimelineCommandTest, GainAndFadesAreThoseOfTheWrittenFile)
{
	WriteEdit();
	float const gain = static_cast<float>(std::pow(10.0, -3.0 / 20.0));
	for (std::string const range : {"0..3", "1..2.5", "67s..100001s"})
	{
		SCOPED_TRACE(range);
		Words const fades = {"--fade-in", "0.41", "--fade-out", "0.73"};
		Render({"--quiet", "--range", range}, "plain.wav");
		Sound const faded = RenderFile("plain.wav", fades);
		EXPECT_FALSE(SameBits(faded, ReadSound(mFolder / "plain.wav")));
		for (std::string const block : {"4096", "100"})
		{
			Words words = {"--quiet", "--range", range, "--block", block};
			words.insert(words.end(), fades.begin(), fades.end());
			EXPECT_TRUE(SameBits(Render(words), faded)) << "blocks of " << block;
			words.insert(words.end(), {"--gain-db", "-3"});
			Sound softer = faded;
			for (float& sample : softer.mSamples)
			{
				sample *= gain;
			}
			EXPECT_TRUE(SameBits(Render(words), softer)) << "blocks of " << block;
		}
	}
	// What is not faded is that of the whole.
	Sound const part =
		Render({"--quiet", "--range", "24011s..96003s", "--fade-in", "0.2", "--fade-out", "0.3"});
	Sound const whole = Render({"--quiet"});
	constexpr std::int64_t kFrames = 96003 - 24011;
	constexpr std::int64_t kIn = kRate / 5;
	constexpr std::int64_t kOut = kRate * 3 / 10 + 1;
	EXPECT_EQ(part.GetFrames(), kFrames);
	EXPECT_TRUE(SameBits(part.Cut(kIn, kFrames - kIn - kOut), whole.Cut(24011 + kIn, kFrames - kIn - kOut)));
	EXPECT_THAT(part.Cut(0, 1).mSamples, testing::Each(0.0f));
	EXPECT_THAT(part.Cut(kFrames - 1, 1).mSamples, testing::Each(0.0f));
}

TEST_F(TimelineCommandTest, LoudnessAndTruePeakAreThoseAskedFor)
{
	WriteEdit();
	using Renderer = std::function<Sound(Words const&)>;
	Renderer const renderTimeline = [this](Words const& inOptions) { return Render(inOptions); };
	Renderer const renderFile = [this](Words const& inOptions) { return RenderFile("tone.wav", inOptions); };
	for (Renderer const& render : {renderTimeline, renderFile})
	{
		SCOPED_TRACE(&render == &renderFile ? "a sound file" : "a timeline");
		EXPECT_NEAR(Measure(render({"--normalize", "-23"})).mIntegrated, -23.0, 0.01);
		EXPECT_NEAR(Measure(render({"--normalize", "-23", "--fade-in", "1", "--fade-out", "1"})).mIntegrated,
			-23.0, 0.01);
		double const natural = ToDecibels(Measure(render({})).mTruePeak);
		LoudnessReading const limited = Measure(render({"--limit-dbtp", std::to_string(natural - 6.0)}));
		EXPECT_LE(ToDecibels(limited.mTruePeak), natural - 6.0 + 0.05);
		EXPECT_GE(ToDecibels(limited.mTruePeak), natural - 6.5);
		LoudnessReading const loud =
			Measure(render({"--gain-db", "6", "--limit-dbtp", std::to_string(natural - 3.0)}));
		EXPECT_LE(ToDecibels(loud.mTruePeak), natural - 3.0 + 0.05) << "the gain comes before the limiter";
		LoudnessReading const both = Measure(render({"--normalize", "-18", "--limit-dbtp", "-7"}));
		EXPECT_LE(ToDecibels(both.mTruePeak), -6.95);
		EXPECT_NEAR(both.mIntegrated, -18.0, 0.1);
	}
	Words const words = {"--normalize", "-18", "--limit-dbtp", "-7"};
	Words asPlayback = words;
	asPlayback.emplace_back("--as-playback");
	EXPECT_TRUE(SameBits(RenderFile("tone.wav", asPlayback), RenderFile("tone.wav", words)));
}

TEST_F(TimelineCommandTest, TheReportOfSoundFilesSaysWhatLiesWhere)
{
	ProgramResult const result = Run({"render", "tone.wav", "impulse.wav", "-o", "out.wav", "--at", "0.5",
		"--at", "3", "--speed", "2", "--limit-dbtp", "-6", "--report", "report.json"});
	ASSERT_EQ(result.mExitCode, 0) << result.mErrors;
	Json const report = Json::parse(ReadBytes(mFolder / "report.json"));
	EXPECT_EQ(report["version"], 1);
	EXPECT_EQ(report["inputs"][1]["position"], kRate * 3 / 2);
	Json const& tone = report["clips"][0];
	Json const& impulse = report["clips"][1];
	EXPECT_EQ(tone["firstSample"], kRate / 4);
	EXPECT_EQ(tone["endSample"], kRate / 4 + 2 * kRate);
	EXPECT_EQ(tone["endMediaSample"], 4 * kRate);
	EXPECT_EQ(impulse["firstSample"], kRate * 3 / 2);
	EXPECT_EQ(impulse["speed"], 2.0);
	Sound const written = ReadSound(mFolder / "out.wav");
	LoudnessReading const measured = Measure(written);
	Json const& output = report["outputs"][0];
	EXPECT_EQ(output["samples"], written.GetFrames());
	EXPECT_NEAR(output["integratedLufs"].get<double>(), measured.mIntegrated, 0.01);
	EXPECT_NEAR(output["truePeakDbtp"].get<double>(), ToDecibels(measured.mTruePeak), 0.01);
	EXPECT_GT(output["limiterReductionDb"].get<double>(), 0.0);
}

TEST_F(TimelineCommandTest, AStrictRenderThatIsRefusedStillReports)
{
	WriteEdit();
	WriteTimeline("missing.otio", {Track("Dialogue", {Clip("Take 3", "gone.wav", 0.0, 1.0)}),
									  Track("Tone", {Clip("first", "tone.wav", 0.0, 1.0)})});
	Json odd = Track("Tone", {Clip("first", "tone.wav", 0.0, 1.0)});
	odd["metadata"]["sonaro"]["gian"] = 3;
	WriteTimeline("odd.otio", {odd});
	struct Case
	{
		char const* mTimeline;
		char const* mStrictness;
		int mExitCode;
	};
	constexpr Case kCases[] = {
		{"edit.otio", "--strict", 0},
		{"edit.otio", "--strict=all", 0},
		{"edit.otio", "--strict=media", 0},
		{"missing.otio", "--strict", 1},
		{"missing.otio", "--strict=all", 1},
		{"missing.otio", "--strict=media", 1},
		{"odd.otio", "--strict", 1},
		{"odd.otio", "--strict=all", 1},
		{"odd.otio", "--strict=media", 0},
	};
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(std::string(test.mTimeline) + " " + test.mStrictness);
		// The timeline is not taken for the option's value.
		ProgramResult const result = Run({"render", "-o", "new.wav", "--report", "report.json", "--quiet",
			test.mStrictness, test.mTimeline});
		EXPECT_EQ(result.mExitCode, test.mExitCode) << result.mErrors;
		EXPECT_EQ(std::filesystem::remove(mFolder / "new.wav"), test.mExitCode == 0);
		Json const report = Json::parse(ReadBytes(mFolder / "report.json"));
		EXPECT_EQ(report.contains("refused"), test.mExitCode != 0);
		EXPECT_EQ(report["outputs"].empty(), test.mExitCode != 0);
		EXPECT_FALSE(report["clips"].empty());
		EXPECT_EQ(report["missing"].empty(), std::string_view(test.mTimeline) != "missing.otio");
		EXPECT_TRUE(std::filesystem::remove(mFolder / "report.json"));
	}
}

TEST_F(TimelineCommandTest, TheReportAgreesWithTheFile)
{
	WriteEdit();
	Sound const mix = Render({"--report", "report.json"});
	Json const report = Json::parse(ReadBytes(mFolder / "report.json"));
	EXPECT_EQ(report["version"], 1);
	EXPECT_EQ(report["missing"], Json::array());
	Json const& click = report["clips"][2];
	EXPECT_EQ(click["name"], "click");
	EXPECT_EQ(click["place"], "/tracks/children/1/children/1");
	std::int64_t const position = click["firstSample"].get<std::int64_t>() + std::int64_t{kImpulse} -
								  click["firstMediaSample"].get<std::int64_t>();
	Sound const rest = Render({"--stems", "track"}, "stems").mSamples.empty()
						   ? ReadSound(mFolder / "stems" / "02 Impulse_s.wav")
						   : Sound();
	auto const isHeard = [](float inSample) { return inSample != 0.0f; };
	auto const found = std::find_if(rest.mSamples.begin(), rest.mSamples.end(), isHeard);
	EXPECT_EQ((found - rest.mSamples.begin()) / 2, position);

	LoudnessReading const measured = Measure(mix);
	Json const& output = report["outputs"][0];
	EXPECT_EQ(output["samples"], mix.GetFrames());
	EXPECT_NEAR(output["integratedLufs"].get<double>(), measured.mIntegrated, 0.01);
	EXPECT_NEAR(output["truePeakDbtp"].get<double>(), ToDecibels(measured.mTruePeak), 0.01);
	EXPECT_NEAR(report["tracks"][0]["integratedLufs"].get<double>(),
		Measure(ReadSound(mFolder / "stems" / "01 Tone.wav")).mIntegrated, 0.01);

	Render({"--range", "1..2"}, "second.wav");
	struct Label
	{
		std::string mFile;
		std::int64_t mSamples;
	};
	for (Label const& label :
		{Label{"out.wav", std::int64_t{36000} * kRate}, {"second.wav", std::int64_t{36001} * kRate}})
	{
		SCOPED_TRACE(label.mFile);
		SF_INFO info{};
		SNDFILE* const file = sf_open((mFolder / label.mFile).c_str(), SFM_READ, &info);
		SF_BROADCAST_INFO extension{};
		EXPECT_EQ(sf_command(file, SFC_GET_BROADCAST_INFO, &extension, sizeof extension), SF_TRUE);
		EXPECT_EQ(
			std::int64_t{extension.time_reference_high} << 32 | extension.time_reference_low, label.mSamples);
		EXPECT_EQ(std::string(extension.originator) + extension.origination_date, "");
		sf_close(file);
	}
}

TEST_F(TimelineCommandTest, OneOutputGoesToTheStandardOutput)
{
	WriteEdit();
	Render({"--quiet"});
	ProgramResult const mix = Run({"render", "edit.otio", "-o", "-", "--report", "mix.json"});
	EXPECT_EQ(mix.mExitCode, 0);
	EXPECT_TRUE(mix.mOutput == ReadBytes(mFolder / "out.wav"));
	EXPECT_EQ(Json::parse(ReadBytes(mFolder / "mix.json"))["outputs"][0]["path"], "-");
	EXPECT_THAT(mix.mErrors, HasSubstr("standard output: "));
	ProgramResult const report = Run({"render", "edit.otio", "-o", "new.wav", "--report", "-", "--json"});
	EXPECT_EQ(Json::parse(report.mOutput)["version"], 1);
	EXPECT_EQ(Json::parse(report.mErrors)["outputs"][0]["path"], "new.wav");
	EXPECT_THAT(
		Run({"graph", "edit.otio", "-o", "-", "--format", "dot"}).mOutput, testing::StartsWith("digraph"));
	for (auto const& [words, text] :
		{std::pair(Words{"-o", "-", "--report", "-"}, "the standard output takes one output"),
			std::pair(Words{"-o", "-", "--stems", "track"}, "--stems")})
	{
		Words all = {"render", "edit.otio"};
		all.insert(all.end(), words.begin(), words.end());
		ProgramResult const refused = Run(all);
		EXPECT_EQ(refused.mExitCode, 2);
		EXPECT_EQ(refused.mOutput, "");
		EXPECT_THAT(refused.mErrors, HasSubstr(text));
	}
}

TEST_F(TimelineCommandTest, FoldersOfStemsAreMadeAndRemovedAgainByARunThatFails)
{
	WriteEdit();
	Render({"--quiet", "--stems", "track", "--report", "a/b/report.json"}, "a/b");
	EXPECT_EQ(Json::parse(ReadBytes(mFolder / "a/b/report.json"))["outputs"].size(), 2u);
	std::vector<std::string> const before = mFolder.List();
	mStart.mFileSizeLimit = 100000;
	ProgramResult const result = Run({"render", "edit.otio", "-o", "c/d/e", "--stems", "track"});
	EXPECT_EQ(result.mExitCode, 1);
	EXPECT_THAT(result.mErrors, HasSubstr("File too large"));
	EXPECT_EQ(mFolder.List(), before);
	mStart.mFileSizeLimit = 0;
	for (auto const& [report, text] : {std::pair("edit.otio", "is the input itself"),
			 std::pair("tone.wav", "is a medium"), std::pair("c/x/report.json", "create it first")})
	{
		ProgramResult const refused =
			Run({"render", "edit.otio", "-o", "c/d/e", "--stems", "track", "--report", report});
		EXPECT_THAT(refused.mErrors, HasSubstr(text));
		EXPECT_EQ(mFolder.List(), before);
	}
	// In a folder that is made on the way.
	Render({"--quiet", "--stems", "track", "--report", "c/report.json"}, "c/d/e");
	EXPECT_TRUE(std::filesystem::exists(mFolder / "c/report.json"));
}

TEST_F(TimelineCommandTest, TheGraphHasEachNodeOnce)
{
	WriteEdit();
	EXPECT_EQ(Run({"graph", "edit.otio", "-o", "graph.dot"}).mExitCode, 0);
	std::istringstream lines(ReadBytes(mFolder / "graph.dot"));
	std::set<std::string> nodes;
	int files = 0;
	int edges = 0;
	for (std::string line; std::getline(lines, line);)
	{
		std::istringstream words(line);
		std::string from;
		std::string what;
		std::string to;
		words >> from >> what >> to;
		if (what == "->")
		{
			++edges;
			EXPECT_THAT(nodes, testing::AllOf(Contains(from), Contains(to)));
		}
		else if (what.starts_with("[label") && from != "node")
		{
			EXPECT_TRUE(nodes.insert(from).second) << line;
			files += line.find("tone.wav") != std::string::npos ? 1 : 0;
		}
	}
	EXPECT_EQ(files, 1);
	EXPECT_GE(edges, static_cast<int>(nodes.size()) - 1);
	// What Graphviz and the libraries of fonts below it keep to the end, and what their threads share, is not ours.
	WriteBytes(mFolder / "leaks", "leak:libgvc\nleak:libfontconfig\n");
	WriteBytes(mFolder / "races", "race:libglib\nrace:libpango\nrace:libfontconfig\n");
	setenv("LSAN_OPTIONS", ("print_suppressions=0:suppressions=" + (mFolder / "leaks").string()).c_str(), 1);
	setenv("TSAN_OPTIONS", ("print_suppressions=0:suppressions=" + (mFolder / "races").string()).c_str(), 1);
	ProgramResult const drawn = Run({"graph", "edit.otio", "-o", "graph.svg"});
	unsetenv("LSAN_OPTIONS");
	unsetenv("TSAN_OPTIONS");
	EXPECT_EQ(drawn.mExitCode, 0) << drawn.mErrors;
	EXPECT_THAT(ReadBytes(mFolder / "graph.svg"), HasSubstr("</svg>"));
}

TEST_F(TimelineCommandTest, KilledAtAnyMomentItLeavesNoHalfFileAndTheNextRunClearsUp)
{
	WriteTimeline("edit.otio", {Track("Long", {Gap(3600.0), Clip("click", "impulse.wav", 0.0, 1.0)})});
	WriteBytes(mFolder / "out.wav", "old");
	std::mt19937 random(9);
	for (int i = 0; i < 4; ++i)
	{
		auto const wait = std::chrono::milliseconds(random() % 300);
		auto const finish = [&wait](int inProcess)
		{
			std::this_thread::sleep_for(wait);
			kill(inProcess, SIGKILL);
		};
		ProgramResult const result = Run({"render", "edit.otio", "-o", "out.wav", "--block", "8"}, finish);
		ASSERT_EQ(result.mSignal, SIGKILL);
		EXPECT_EQ(ReadBytes(mFolder / "out.wav"), "old");
	}
	// At work for sure.
	auto const waitForWork = [this](int inProcess)
	{
		for (int tries = 0; !HasTemporaryFile() && tries < 6000; ++tries)
		{
			std::this_thread::sleep_for(std::chrono::milliseconds(5));
		}
		kill(inProcess, SIGKILL);
	};
	Run({"render", "edit.otio", "-o", "out.wav", "--block", "8"}, waitForWork);
	EXPECT_TRUE(HasTemporaryFile());
	WriteEdit();
	Render({"--quiet"});
	EXPECT_FALSE(HasTemporaryFile());
}

} // namespace
} // namespace SonaroHost::Testing
