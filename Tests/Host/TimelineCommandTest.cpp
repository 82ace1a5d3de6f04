// Runs the real program on timelines, as a shell does.

#include "ProgramRun.h"
#include "SonaroHost/Base/ChannelLayouts.h"
#include "SonaroHost/Metering/LoudnessMeter.h"
#include "TimelineJson.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <gmock/gmock.h>

#include <cmath>
#include <csignal>
#include <cstdlib>
#include <random>
#include <set>
#include <sstream>
#include <thread>
#include <tuple>
#include <utility>

namespace SonaroHost::Testing::TimelineCommandTest
{

using testing::Contains;
using testing::HasSubstr;

constexpr int kRate = 48000;

std::int64_t ToFrames(double inSeconds)
{
	return std::llround(inSeconds * kRate);
}

class TimelineCommandTest : public ProgramTest
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
		Json const timeline = With(WithSettings(Timeline(inTracks, inMarkers), {{"layout", "stereo"}}),
			{{"global_start_time", Time(36000.0)}});
		WriteBytes(mFolder / inName, timeline.dump());
	}

	// Tone under impulses, three seconds long.
	void WriteEdit()
	{
		WriteTimeline("edit.otio",
			{WithSettings(
				 Track("Tone", {Clip("first", "tone.wav", 0.0, 1.6), Clip("second", "tone.wav", 2.0, 1.4)}),
				 {{"gain", -6.0}}),
				Track("Impulse/s", {Gap(1.0), Clip("click", "impulse.wav", 0.2, 1.0)})},
			{Marker("Verse", 0.4, 0.8), Marker("Point", 1.0, 0.0), Marker("End", 2.0, 1.0)});
	}

	// One clip on each track, of which the media of the first are missing.
	void WriteMissing()
	{
		WriteTimeline("missing.otio",
			{Track("Dialogue", {Clip("Take 3", "gone.wav")}), Track("Tone", {Clip("first", "tone.wav")})});
	}

	// With a setting that is not known.
	void WriteOdd()
	{
		WriteTimeline("odd.otio", {WithSettings(Track("Tone", {Clip("first", "tone.wav")}), {{"gian", 3}})});
	}

	// Of edit.otio; nothing of a folder.
	Sound Render(Words const& inOptions, std::string const& inOutput = "out.wav")
	{
		ProgramResult const result = Run(Join({"render", "edit.otio", "-o", inOutput}, inOptions));
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
	Sound RenderFile(std::string const& inFile, Words const& inOptions)
	{
		ProgramResult const result = Run(Join({"render", inFile, "-o", "file.wav", "--quiet"}, inOptions));
		EXPECT_EQ(result.mExitCode, 0) << result.mErrors;
		return ReadSound(mFolder / "file.wav");
	}

	static constexpr std::size_t kImpulse = 20000;
};

LoudnessReading Measure(Sound const& inSound)
{
	LoudnessMeter meter(MakeLayoutOfChannels(static_cast<unsigned>(inSound.mChannels)), inSound.mSampleRate,
		LoudnessMeter::Memory::kGrowing);
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

TEST_F(TimelineCommandTest, ExitCodesReportWhatBecameOfIt)
{
	WriteEdit();
	WriteMissing();
	WriteTimeline("hour.otio", {Track("Tone", {Clip("first", "tone.wav")}),
								   Track("Dialogue", {Clip("Take 4", "tone.wav", 3600.0, 2.0)})});
	WriteOdd();
	std::tuple<int, Words, Words> const cases[] = {
		{0, {"edit.otio"}, {}},
		{3, {"missing.otio"}, {"Take 3", "Dialogue", "gone.wav", "silent"}},
		{3, {"hour.otio"},
			{"Take 4", "Dialogue", "tone.wav", "0:00.000 to 0:04.000", "1:00:00.000 to 1:00:02.000"}},
		{1, {"hour.otio", "--strict"}, {"--strict", "1 clip has no media"}},
		{0, {"odd.otio"}, {"gian", "/tracks/children/0"}},
	};
	for (auto const& [exitCode, words, texts] : cases)
	{
		SCOPED_TRACE(testing::PrintToString(words));
		ProgramResult const result = Run(Join({"render", "-o", "new.wav", "--quiet"}, words));
		EXPECT_EQ(result.mExitCode, exitCode) << result.mErrors;
		EXPECT_EQ(result.mErrors.empty(), texts.empty()) << result.mErrors;
		for (std::string const& text : texts)
		{
			EXPECT_THAT(result.mErrors, HasSubstr(text));
		}
		EXPECT_EQ(std::filesystem::remove(mFolder / "new.wav"), exitCode == 0 || exitCode == 3);
	}
}

TEST_F(TimelineCommandTest, WhatMakesNoSenseForATimelineIsRefused)
{
	WriteEdit();
	Words const before = mFolder.List();
	std::tuple<int, Words, Words> const cases[] = {
		{2, {"edit.otio", "--strict=some"}, {"some", "--strict=media"}},
		{2, {"edit.otio", "--gain-db", "-3", "--normalize", "-16"}, {"gain", "loudness"}},
		{2, {"tone.wav", "--gain-db", "-3", "--normalize", "-16"}, {"gain", "loudness"}},
		{2, {"tone.wav", "--normalize", "1"}, {"-70", "LUFS"}},
		{2, {"tone.wav", "--limit-dbtp", "nan"}, {"dBTP"}},
		{2, {"edit.otio", "--gain-db", "201"}, {"--gain-db"}},
		{2, {"edit.otio", "--range", "1..2", "--fade-in", "0.6", "--fade-out", "0.6"}, {"fades", "0:01.000"}},
		{2, {"edit.otio", "--stems", "marker", "--fade-in", "0.9"}, {"fades", "0:00.800", "Verse"}},
		{1, {"none.otio"}, {"none.otio"}},
		{2, {"edit.otio", "--media", "tone.wav"}, {"'tone.wav'", "is not a folder"}},
		{2, {"edit.otio", "tone.wav"}, {"edit.otio", "timeline"}},
		{2, {"edit.otio", "--speed", "2"}, {"--speed"}},
		{2, {"edit.otio", "--start", "1"}, {"--start", "--range"}},
		{2, {"tone.wav", "--stems", "track"}, {"--stems"}},
		{2, {"edit.otio", "--range", "Chorus"}, {"Chorus"}},
		{2, {"edit.otio", "--range", "5..6"}, {"5..6"}},
		{2, {"edit.otio", "--range", "10:00:01:25+1"}, {"10:00:01:25"}},
	};
	std::vector<RefusedWords> refused = {
		{2, {"waveform", "edit.otio", "-o", "out.png", "--width", "32767", "--height", "32767"},
			{"is too large for a bitmap; make it smaller or write .svg"}}};
	for (auto const& [exitCode, words, texts] : cases)
	{
		refused.push_back({exitCode, Join({"render", "-o", "new.wav"}, words), texts});
	}
	// By every command.
	for (Words const& words : {Words{"render", "edit.otio", "-o", "new.wav"}, {"info", "edit.otio"},
			 {"waveform", "edit.otio", "-o", "new.svg"}, {"graph", "edit.otio", "-o", "new.dot"}})
	{
		refused.push_back({2, Join(words, {"--media", ".", "--media", "gone"}),
			{"'gone': the media folder does not exist"}});
	}
	// What is read is never written.
	refused.push_back({2, {"render", "edit.otio", "-o", "new.wav", "--report", "tone.wav"},
		{"is a media file of the timeline"}});
	refused.push_back({2, {"waveform", "edit.otio", "-o", "tone.wav", "--format", "svg"},
		{"is a media file of the timeline"}});
	refused.push_back(
		{2, {"graph", "edit.otio", "-o", "edit.otio", "--format", "dot"}, {"is the input itself"}});
	refused.push_back({2, {"graph", "edit.otio", "-o", "tone.wav", "--format", "dot"},
		{"is a media file of the timeline"}});
	ExpectRefusals(refused);
	EXPECT_EQ(mFolder.List(), before);
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
	ProgramResult const warned = Run({"render", "levels.otio", "-o", "out.wav"});
	EXPECT_EQ(warned.mExitCode, 3);
	EXPECT_THAT(warned.mErrors, testing::StartsWith("sonaro: warning: level not read: "));
	EXPECT_THAT(warned.mOutput, HasSubstr("25 levels of other programs not read"));
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
	Json const clip = Clip("first", "tone.wav", 0.0, 1.0);
	Json const pictures = With(Track("Pictures", {clip}), {{"kind", "Video"}});
	Json const muted = Json::parse(R"({"metadata": {"sonaro": {"mute": true}}})");
	Json const stack = With(Stack({Track("A1", {clip})}), {{"enabled", false}});
	Json const generator = With(clip, {{"media_reference", {{"OTIO_SCHEMA", "GeneratorReference.1"}}}});
	std::pair<std::string, Json> const cases[] = {
		{"2 tracks of kind Video, none of kind Audio", List({pictures, pictures})},
		{"1 track of kind Video, 1 track of kind 'Subtitle', none of kind Audio",
			List({pictures, With(pictures, {{"kind", "Subtitle"}})})},
		{"1 track of kind Video, 1 track of kind Audio (muted), 1 stack (disabled)",
			List({pictures, With(Track("A1", {clip}), muted), stack})},
		{"1 track of kind Audio without clips", List({Track("A1", {Gap(1.0)})})},
		{"1 track of kind Audio with 2 clips (disabled), 1 clip (generators are not rendered)",
			List({Track(
				"A1", {With(clip, {{"enabled", false}}), With(clip, {{"enabled", false}}), generator})})},
		{"1 track of kind Audio with 1 clip (trimmed off by its parent track or stack, or has zero length)",
			List({With(Track("A1", {Gap(1.0), clip}), {{"source_range", Range(0.0, 0.5)}})})},
	};
	for (auto const& [why, tracks] : cases)
	{
		SCOPED_TRACE(why);
		Json timeline = Timeline({});
		timeline["tracks"]["children"] = tracks;
		WriteBytes(mFolder / "silent.otio", timeline.dump());
		for (Words const& words : {Words{"render", "silent.otio", "-o", "new.wav", "--report", "new.json"},
				 Words{"render", "silent.otio", "-o", "new", "--stems", "track"},
				 Words{"waveform", "silent.otio", "-o", "new.svg"},
				 Words{"graph", "silent.otio", "-o", "new.dot"}})
		{
			ProgramResult const result = Run(words);
			EXPECT_EQ(result.mExitCode, 3);
			EXPECT_THAT(result.mErrors, HasSubstr("silent.otio"));
			EXPECT_THAT(result.mErrors, HasSubstr("nothing in this timeline is heard: " + why + "\n"));
		}
		EXPECT_EQ(mFolder.List(), (Words{"impulse.wav", "silent.otio", "tone.wav"}));
		ProgramResult const info = Run({"info", "silent.otio", "--json"});
		EXPECT_EQ(info.mExitCode, 3);
		EXPECT_EQ(
			Json::parse(info.mOutput)["refusal"]["reason"], "nothing in this timeline is heard: " + why);
	}
}

TEST_F(TimelineCommandTest, ARangeIsACutOfTheWhole)
{
	WriteEdit();
	Sound const whole = Render({"--quiet"});
	std::tuple<std::string, double, double> const cases[] = {
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
	for (auto const& [range, start, end] : cases)
	{
		SCOPED_TRACE(range);
		std::int64_t const first = ToFrames(start);
		EXPECT_TRUE(SameBits(Render({"--range", range, "--quiet"}), whole.Cut(first, ToFrames(end) - first)));
	}
}

TEST_F(TimelineCommandTest, StemsAddUpToTheMixWhateverBecomesOfIt)
{
	WriteEdit();
	for (Words const& levels : {Words{"--normalize", "-20"},
			 {"--gain-db", "-3", "--fade-in", "0.5", "--fade-out", "0.7", "--range", "0.3.."}})
	{
		SCOPED_TRACE(testing::PrintToString(levels));
		Sound const mix = Render(Join({"--quiet"}, levels));
		Render(Join({"--quiet", "--stems", "track"}, levels), "stems");
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
		std::int64_t const first = ToFrames(test.mStart);
		EXPECT_TRUE(
			SameBits(ReadSound(mFolder / "parts" / test.mFile), mix.Cut(first, ToFrames(test.mEnd) - first)));
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
			Words const words = Join({"--quiet", "--range", range, "--block", block}, fades);
			EXPECT_TRUE(SameBits(Render(words), faded)) << "blocks of " << block;
			Sound softer = faded;
			for (float& sample : softer.mSamples)
			{
				sample *= gain;
			}
			EXPECT_TRUE(SameBits(Render(Join(words, {"--gain-db", "-3"})), softer)) << "blocks of " << block;
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
	EXPECT_TRUE(
		SameBits(RenderFile("tone.wav", Join(words, {"--as-playback"})), RenderFile("tone.wav", words)));
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
	WriteMissing();
	WriteOdd();
	constexpr std::tuple<char const*, char const*, int> kCases[] = {
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
	for (auto const& [timeline, strictness, exitCode] : kCases)
	{
		SCOPED_TRACE(std::string(timeline) + " " + strictness);
		// The timeline is not taken for the option's value.
		ProgramResult const result =
			Run({"render", "-o", "new.wav", "--report", "report.json", "--json", strictness, timeline});
		EXPECT_EQ(result.mExitCode, exitCode) << result.mErrors;
		EXPECT_EQ(result.mErrors.find("--strict") != std::string::npos, exitCode != 0) << result.mErrors;
		EXPECT_EQ(std::filesystem::remove(mFolder / "new.wav"), exitCode == 0);
		Json const report = Json::parse(ReadBytes(mFolder / "report.json"));
		for (Json const& json : {report, Json::parse(result.mOutput)})
		{
			EXPECT_EQ(json.contains("refused"), exitCode != 0);
			EXPECT_EQ(json["outputs"].empty(), exitCode != 0);
		}
		EXPECT_FALSE(report["clips"].empty());
		EXPECT_EQ(report["missing"].empty(), std::string_view(timeline) != "missing.otio");
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
	ExpectRefusal({"render", "edit.otio", "-o", "-", "--report", "-"}, 2,
		{"only one output can go to the standard output"});
	ExpectRefusal({"render", "edit.otio", "-o", "-", "--stems", "track"}, 2, {"--stems"});
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
			 std::pair("tone.wav", "is a media file of the timeline"),
			 std::pair("c/x/report.json", "create it first")})
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
	ProgramResult const drawn = Run({"graph", "edit.otio", "-o", "graph.svg"});
	EXPECT_EQ(drawn.mExitCode, 0) << drawn.mErrors;
	EXPECT_THAT(ReadBytes(mFolder / "graph.svg"), HasSubstr("</svg>"));
}

TEST_F(TimelineCommandTest, TheGraphHasTheNamesOfTheTimelineAndSilenceOnlyIfAllIsDrawn)
{
	Json const nest =
		With(Stack({Track("Boom <b>", {Clip("shout", "tone.wav")})}), {{"name", "Scene \"4\""}});
	Json track = Track("Dia & logue", {Gap(0.4), Clip("hum", "tone.wav"), nest});
	track["metadata"]["sonaro"]["gain"] = -3;
	WriteTimeline("named.otio", {track});
	EXPECT_EQ(Run({"graph", "named.otio", "-o", "graph.dot"}).mExitCode, 0);
	std::string const dot = ReadBytes(mFolder / "graph.dot");
	for (char const* const text : {"track <b>Dia &amp; logue</b>", "clip <b>hum</b>",
			 "nested <b>Scene &quot;4&quot;</b>", "track <b>Boom &lt;b&gt;</b>", "fader<br/>",
			 ">AudioClipTrackRenderer</font>", "subgraph cluster_"})
	{
		EXPECT_THAT(dot, HasSubstr(text));
	}
	EXPECT_THAT(dot, Not(HasSubstr("SilentAudioTrackRenderableItem")));
	EXPECT_EQ(Run({"graph", "named.otio", "-o", "all.dot", "--all"}).mExitCode, 0);
	EXPECT_THAT(ReadBytes(mFolder / "all.dot"), HasSubstr("SilentAudioTrackRenderableItem"));
	EXPECT_EQ(Run({"graph", "named.otio", "-o", "graph.svg"}).mExitCode, 0);
	EXPECT_THAT(ReadBytes(mFolder / "graph.svg"), HasSubstr("Dia &amp; logue"));
}

// Which angle is heard when, in samples of the programme, through a cut of the stack and at twice the speed.
TEST_F(TimelineCommandTest, ReportsListWhichAngleIsHeardWhen)
{
	Json scene = WithSettings(Stack({Track("Wide", {Clip("w", "tone.wav", 0.0, 3.0)}),
								  Track("Close", {Clip("c", "tone.wav", 0.4, 3.0)})}),
		{{"speed", 2.0},
			{"multicam", {{"angle", "Close"}, {"fade", 0.1},
							 {"cuts", List({{{"time", 1.0}, {"angle", 1}}, {{"time", 1.04}, {"angle", 2}},
										  {{"time", -1}, {"angle", 1}}, {{"time", 0}, {"angle", 2}},
										  {{"time", 3}, {"angle", 1}}})}}}});
	scene["name"] = "Scene 4";
	scene["source_range"] = Range(0.2, 1.0);
	WriteTimeline("angles.otio", {Track("A1", {Gap(0.4), scene})});
	ProgramResult const result =
		Run({"render", "angles.otio", "-o", "out.wav", "--quiet", "--report", "report.json"});
	ASSERT_EQ(result.mExitCode, 0) << result.mErrors;
	Json const report = Json::parse(ReadBytes(mFolder / "report.json"));
	auto const row = [](unsigned inAngle, char const* inName, double inFirst, double inEnd)
	{
		return Json{{"angle", inAngle}, {"name", inName}, {"track", "A1 / Scene 4"},
			{"place", "/tracks/children/0/children/1/children/" + std::to_string(inAngle - 1)},
			{"firstSample", ToFrames(inFirst)}, {"endSample", ToFrames(inEnd)}};
	};
	EXPECT_EQ(report["angles"],
		List({row(2, "Close", 0.4, 0.9), row(1, "Wide", 0.9, 0.92), row(2, "Close", 0.92, 1.4)}));
	EXPECT_EQ(Json::parse(Run({"info", "angles.otio", "--json"}).mOutput)["angles"], report["angles"]);
	EXPECT_THAT(Run({"info", "angles.otio"}).mOutput,
		HasSubstr("Angles\n  0:00.400 - 0:00.900  2  Close  A1 / Scene 4\n"));
	std::set<std::string> notes;
	for (Json const& note : report["notes"])
	{
		std::string const place = note["place"];
		notes.insert(place.substr(place.rfind('/') + 1) + " " + note["kind"].get<std::string>());
	}
	EXPECT_EQ(notes, (std::set<std::string>{"1 guess", "2 remark", "4 remark"})) << report["notes"];
	EXPECT_EQ(Run({"graph", "angles.otio", "-o", "graph.dot"}).mExitCode, 0);
	for (char const* const text : {"multicam <b>Scene 4</b>", "sequence <b>Close</b>", "angles of Scene 4"})
	{
		EXPECT_THAT(ReadBytes(mFolder / "graph.dot"), HasSubstr(text));
	}
	EXPECT_EQ(
		Run({"render", "angles.otio", "-o", "out.wav", "--quiet", "--report", "report.html"}).mExitCode, 0);
	EXPECT_THAT(
		ReadBytes(mFolder / "report.html"), HasSubstr("Which angle of multicam stacks is heard when"));
}

TEST_F(TimelineCommandTest, AllCommandsKeepThePitchOfClips)
{
	Json const warp{{"OTIO_SCHEMA", "LinearTimeWarp.1"}, {"time_scalar", 1.5}};
	WriteTimeline("fast.otio",
		{Track("Tone", {With(Clip("fast", "tone.wav", 0.0, 2.0), {{"effects", Json::array({warp})}})})});
	Words const kept{"fast.otio", "--keep-pitch", "--stretch", "omega"};
	ASSERT_EQ(Run(Join({"render", "-o", "mix.wav"}, kept)).mExitCode, 0);
	auto const measure = [this](Words const& inWords) {
		return Json::parse(Run(Join({"loudness", "--json"}, inWords)).mOutput)["inputs"][0]["integratedLufs"];
	};
	EXPECT_EQ(measure(kept), measure({"mix.wav"}));
	EXPECT_NE(measure(kept), measure({"fast.otio"}));
	auto const write = [this](Words const& inWords, std::string const& inOutput)
	{
		EXPECT_EQ(Run(Join(inWords, {"-o", inOutput})).mExitCode, 0);
		return ReadBytes(mFolder / inOutput);
	};
	for (auto const& [command, output] : {std::pair("waveform", "out.svg"), {"graph", "out.dot"}})
	{
		EXPECT_NE(write(Join({command}, kept), output), write({command, "fast.otio"}, output));
	}
	ExpectRefusal({"loudness", "fast.otio", "--pitch", "2"}, 2, {"--pitch applies only to sound files"});
}

TEST_F(TimelineCommandTest, TheGraphShortensLongNamesAndNamesWhatWorksForThem)
{
	std::string const shown(20, 'a');
	std::string const name = shown + std::string(80, 'x') + "\" & <z>";
	Json track = Track("Hall", {Clip(name, "tone.wav", 0.0, 1.0), Clip("b", "tone.wav", 0.0, 1.0)});
	track["children"][0]["metadata"]["sonaro"] = {{"fade_in", {{"duration", 0.1}}}, {"pan", 0.5}};
	WriteTimeline("long.otio", {track});
	EXPECT_EQ(Run({"graph", "long.otio", "-o", "graph.dot"}).mExitCode, 0);
	EXPECT_THAT(ReadBytes(mFolder / "graph.dot"),
		AllOf(HasSubstr("clip <b>" + shown), HasSubstr("...xxx"),
			Not(HasSubstr("clip <b>" + name.substr(0, 60))), HasSubstr("content of " + shown),
			HasSubstr("fade of " + shown), HasSubstr("content of b<br/>"),
			HasSubstr(", tooltip=\"" + name.substr(0, 100) + "&quot; &amp; &lt;z&gt;\"")));
	EXPECT_EQ(Run({"graph", "long.otio", "-o", "graph.svg"}).mExitCode, 0);
	EXPECT_THAT(ReadBytes(mFolder / "graph.svg"),
		HasSubstr("xlink:title=\"" + name.substr(0, 100) + "&quot; &amp; &lt;z&gt;\""));
}

TEST_F(TimelineCommandTest, MediaOfTheOutputsRatePassAlsoWhereAFrameIsNoWholeNumberOfTicks)
{
	Sound const sound = MakeSound(1, 44099, 44099);
	WriteSound(mFolder / "odd.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, sound);
	WriteTimeline("odd.otio", {Track("One", {Clip("all", "odd.wav", 0.0, 1.0)})});
	EXPECT_EQ(Run({"render", "odd.otio", "-o", "out.wav", "--layout", "mono"}).mExitCode, 0);
	EXPECT_TRUE(SameBits(ReadSound(mFolder / "out.wav"), sound));
}

TEST_F(TimelineCommandTest, TheGraphOfATrackHasNoOtherAndATrackMustBeHeard)
{
	WriteTimeline("edit.otio",
		{Track("One", {Clip("click", "impulse.wav", 0.0, 1.0)}),
			Track("Two", {Clip("hum", "tone.wav", 0.0, 1.0)}),
			WithSettings(Track("Three", {Clip("hum", "tone.wav", 0.0, 1.0)}), {{"mute", true}})});
	EXPECT_EQ(Run({"graph", "edit.otio", "-o", "graph.dot", "--track", "Two"}).mExitCode, 0);
	EXPECT_THAT(
		ReadBytes(mFolder / "graph.dot"), AllOf(HasSubstr("tone.wav"), Not(HasSubstr("impulse.wav"))));
	// What is missing on other tracks does not matter.
	WriteTimeline("hole.otio", {Track("One", {Clip("click", "impulse.wav", 0.0, 1.0)}),
								   Track("Hole", {Clip("none", "none.wav", 0.0, 1.0)})});
	EXPECT_EQ(Run({"graph", "hole.otio", "-o", "graph.dot", "--track", "One"}).mExitCode, 0);
	EXPECT_EQ(Run({"graph", "hole.otio", "-o", "graph.dot", "--track", "Hole"}).mExitCode, 3);
	ProgramResult const refused = Run({"graph", "edit.otio", "-o", "none.dot", "--track", "3"});
	EXPECT_EQ(refused.mExitCode, 2);
	EXPECT_THAT(refused.mErrors, HasSubstr("it is muted"));
	EXPECT_FALSE(std::filesystem::exists(mFolder / "none.dot"));
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

} // namespace SonaroHost::Testing::TimelineCommandTest
