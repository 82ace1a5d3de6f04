// What the program says, run as a shell runs it: refusals, what is wrong with a command line, names from files.

#include "ProgramRun.h"
#include "TimelineJson.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <set>
#include <sstream>
#include <tuple>
#include <utility>

namespace SonaroHost::Testing::MessagesTest
{

using testing::HasSubstr;
using testing::StartsWith;
constexpr int kRate = 48000;

// A clip within so many nested stacks, each alone on a track of the one around it.
std::string Nested(std::size_t inLevels)
{
	Json content = Clip("deep", "tone.wav");
	for (std::size_t level = 0; level < inLevels; ++level)
	{
		content = Stack({Track("", {content})});
	}
	return Timeline({Track("A1", {content})}).dump();
}

std::string Repeat(std::string const& inText, std::size_t inCount)
{
	std::string text;
	for (std::size_t i = 0; i < inCount; ++i)
	{
		text += inText;
	}
	return text;
}

class MessagesTest : public ProgramTest
{
protected:
	void SetUp() override
	{
		WriteSound(mFolder / "tone.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, MakeSound(2, kRate, 2 * kRate));
		WriteBytes(mFolder / "edit.otio", Timeline({Track("A1", {Clip("one", "tone.wav")})}).dump());
	}
};

TEST_F(MessagesTest, EveryCommandRefusesWithFilePlaceAndOne)
{
	struct Case
	{
		std::string mText;
		// What follows the name of the file.
		std::string mPlace;
		std::string mReason;
	};
	constexpr double kFiftyHours = 50.0 * 3600.0;
	Case const cases[] = {
		// Found by the reader.
		{"{\n\"a\": }", ", line 2, column 6: ", ""},
		{Json({{"OTIO_SCHEMA", "Clip.1"}}).dump(), ": ", "expected a Timeline"},
		{Timeline({Track("A1", {Clip("c", "tone.wav", 0.0, -0.04)})}).dump(),
			", /tracks/children/0/children/0/source_range/duration", "-1 is negative; use 0 or more"},
		{Timeline({WithSettings(Track("A1", {}), {{"output", "gone"}})}).dump(),
			", /tracks/children/0/metadata/sonaro/output: ", "there is no submix 'gone'"},
		// Found when it is laid out.
		{Timeline({}).dump(), ", /tracks: ", "has no length"},
		{Timeline({Track("A1", {Clip("c", "tone.wav", 0.0, 0.3 / kRate)})}).dump(),
			", /tracks: ", "is shorter than one sample"},
		// Found when the graph is built.
		{Timeline({Track("A1", {Gap(kFiftyHours), Clip("c", "tone.wav")})}).dump(),
			", /tracks/children/0/children/1: ", "track 'A1', item 'c': it ends beyond 50 hours; "},
		{Nested(64), ", /tracks/children/0/children/0/children/0/", "nested deeper than 64 levels; "},
	};
	for (Case const& test : cases)
	{
		WriteBytes(mFolder / "bad.otio", test.mText);
		for (Words const& words : {Words{"render", "bad.otio", "-o", "out.wav"}, Words{"info", "bad.otio"},
				 Words{"info", "bad.otio", "--json"}, Words{"waveform", "bad.otio", "-o", "out.png"},
				 Words{"graph", "bad.otio", "-o", "out.svg"}})
		{
			SCOPED_TRACE(test.mReason + testing::PrintToString(words));
			ProgramResult const result = Run(words);
			EXPECT_EQ(result.mExitCode, 1);
			EXPECT_THAT(result.mErrors, StartsWith("sonaro: 'bad.otio'" + test.mPlace));
			EXPECT_THAT(result.mErrors, HasSubstr(test.mReason));
			EXPECT_EQ(std::count(result.mErrors.begin(), result.mErrors.end(), '\n'), 1) << result.mErrors;
			EXPECT_THAT(mFolder.List(), testing::ElementsAre("bad.otio", "edit.otio", "tone.wav"));
		}
	}
}

TEST_F(MessagesTest, TheDeepestThatIsRenderedHasOneLevelLess)
{
	WriteBytes(mFolder / "deep.otio", Nested(63));
	EXPECT_EQ(Run({"info", "deep.otio"}).mExitCode, 0);
	WriteBytes(mFolder / "deeper.otio", Nested(64));
	ProgramResult const result = Run({"info", "deeper.otio", "--json"});
	// The message shortens the place, and JSON has all of it.
	EXPECT_THAT(result.mErrors, HasSubstr("..."));
	Json const refusal = Json::parse(result.mOutput)["refusal"];
	EXPECT_EQ(refusal["file"], "deeper.otio");
	EXPECT_EQ(refusal["place"], "/tracks" + Repeat("/children/0/children/0", 64));
	EXPECT_THAT(refusal["reason"], HasSubstr("64 levels"));
	EXPECT_THAT(refusal["remedy"], HasSubstr("remove levels"));
}

TEST_F(MessagesTest, AWrongWordNamesTheNearestRightOne)
{
	ExpectRefusals({
		{2, {"render", "a.otio", "--reprot", "x.json"},
			{"unknown option '--reprot'; did you mean --report?"}},
		{2, {"render", "a.otio", "-o", "x.wav", "--normalise=-16"}, {"did you mean --normalize?"}},
		{2, {"render", "a.wav", "--outptu", "x.wav"}, {"unknown option '--outptu'; did you mean --output?"}},
		{2, {"render", "a.wav", "-o", "x.wav", "--over"},
			{"unknown option '--over' (see sonaro render --help)"}},
		{2, {"render", "a.wav", "-o", "x.wav", "--limit"}, {"did you mean --limit-dbtp?"}},
		{2, {"render", "-o", "x.wav", "--rate=44100.0", "--", "-a.otio"},
			{"--rate: '44100.0' is not a whole number (see sonaro render --help)"}},
		{2, {"render", "-o", "x.wav", "--over", "--", "a.wav"}, {"unknown option '--over'"}},
		{2, {"waveform", "a.wav", "--heigth", "9"}, {"did you mean --height? (see sonaro waveform --help)"}},
		{2, {"graph", "a.otio", "--meida", "."}, {"did you mean --media?"}},
		{2, {"info", "a.wav", "--jsno"}, {"did you mean --json?"}},
		{2, {"info", "a.wav", "--colour\x1b[31m"}, {R"(unknown option '--colour\x1b[31m' (see)"}},
		{2, {"rendr", "a.wav"}, {"unknown command 'rendr'; did you mean render?"}},
		{2, {"inof"}, {"did you mean info?"}},
		{2, {"edit.otio"}, {"unknown command 'edit.otio' (see sonaro --help)"}},
		{2, {"--verison"}, {"unknown option '--verison'; did you mean --version?"}},
		{2, {},
			{"no command given; use render, play, waveform, loudness, info, graph, effects, serve, plan or "
			 "join (see "
			 "sonaro --help)"}},
	});
}

TEST_F(MessagesTest, HelpGroupsOptionsByWhatTheyAreFor)
{
	std::array<std::string, 3> const cases[] = {
		{"render", "--output", "All inputs:"},
		{"render", "--speed", "Sound files:"},
		{"render", "--stems", "Timelines:"},
		{"waveform", "--height", "All inputs:"},
		{"waveform", "--bits", "Sound files:"},
		{"waveform", "--media", "Timelines:"},
		{"info", "--json", "All inputs:"},
		{"info", "--media", "Timelines:"},
		{"graph", "--media", "Options:"},
	};
	for (auto const& [command, option, expected] : cases)
	{
		SCOPED_TRACE(command + " " + option);
		std::istringstream help(Run({command, "--help"}).mOutput);
		std::string group;
		for (std::string line; std::getline(help, line) && line.find(option) == std::string::npos;)
		{
			group = !line.empty() && line.back() == ':' && line.front() != ' ' ? line : group;
		}
		EXPECT_EQ(group, expected);
	}
}

TEST_F(MessagesTest, EveryExitCodeOfTheHelpIsMetAndThereIsNoOther)
{
	WriteBytes(mFolder / "missing.otio",
		Timeline({Track("A1", {Clip("one", "tone.wav"), Clip("two", "gone.wav")})}).dump());
	std::pair<int, Words> const cases[] = {
		{0, {"--help"}},
		{0, {"--version"}},
		{0, {"graph", "edit.otio", "-o", "out.dot"}},
		{0, {"info", "missing.otio"}},
		{1, {"info", "gone.otio"}},
		{2, {"render", "edit.otio"}},
		{3, {"waveform", "missing.otio", "-o", "out.png"}},
		{3, {"graph", "missing.otio", "-o", "out.dot"}},
	};
	std::set<int> met;
	for (auto const& [exitCode, words] : cases)
	{
		SCOPED_TRACE(testing::PrintToString(words));
		EXPECT_EQ(Run(words).mExitCode, exitCode);
		met.insert(exitCode);
	}
	std::istringstream help(Run({"--help"}).mOutput);
	std::set<int> listed;
	bool isListed = false;
	for (std::string line; std::getline(help, line);)
	{
		isListed = line == "Exit codes:" || (isListed && !line.empty());
		if (isListed && line.size() > 2 && std::isdigit(static_cast<unsigned char>(line[2])))
		{
			listed.insert(line[2] - '0');
		}
	}
	EXPECT_EQ(listed, met);
}

TEST_F(MessagesTest, OddFilesGetAReasonAndARemedy)
{
	WriteBytes(mFolder / "cafe\u0301.otio", " ");
	WriteBytes(mFolder / "notes.txt", "This is no sound.\n");
	WriteBytes(mFolder / "empty.otio", " \n");
	WriteBytes(mFolder / "binary.otio", std::string("\0\1\2", 3));
	WriteBytes(mFolder / "noise.wav", "RIFFnoise");
	for (char const* const name : {"takes", "folder.otioz"})
	{
		std::filesystem::create_directory(mFolder / name);
	}
	std::string const takes = " accepts sound files (such as WAV, AIFF, FLAC, Ogg and MP3), movies (such as "
							  "MOV, MP4, MKV and MXF) and timelines";
	std::string const noTimeline = "is not named as a timeline; graph draws timelines (.otio";
	ExpectRefusals({
		{1, {"graph", "tone.wav", "-o", "out.svg"}, {noTimeline}},
		{1, {"graph", "takes", "-o", "out.svg"}, {noTimeline}},
		{1, {"graph", "gone.wav", "-o", "out.svg"},
			{"'gone.wav': does not exist; graph draws timelines (.otio"}},
		{1, {"waveform", "notes.txt", "-o", "out.png"}, {"waveform" + takes}},
		{1, {"waveform", "takes", "-o", "out.png"},
			{"is a folder, not a sound file; waveform accepts sound files"}},
		{1, {"render", "notes.txt", "-o", "out.wav"}, {"render" + takes}},
		{1, {"info", "takes"}, {"info" + takes}},
		{1, {"info", ""}, {"the name of the input is empty; give the name of a file"}},
		{1, {"info", "caf\u00e9.otio"},
			{"does not exist, but a file does whose name is the same in another form"}},
		{1, {"info", "empty.otio"}, {"'empty.otio': is empty"}},
		{1, {"info", "binary.otio"}, {"'binary.otio': is not an OpenTimelineIO file"}},
		{1, {"info", "folder.otioz"},
			{"is a folder, not a zip archive; a bundle that is a folder ends in .otiod"}},
		{1, {"info", "noise.wav"}, {"; info accepts sound files"}},
	});
}

TEST_F(MessagesTest, NamesFromFilesCannotCommandATerminal)
{
	// Colours, the 8-bit form of the same in UTF-8 and as a bare byte, a bell, a new line, the other direction of writing.
	std::string const evil = "\x1b[31mred\xc2\x9b"
							 "1mbold\a\nnext\xe2\x80\xaeltr\x7f";
	std::string const shown = R"(\x1b[31mred\u009b1mbold\x07\x0anext\u202eltr\u007f)";
	WriteBytes(mFolder / "edit.otio",
		Timeline({WithSettings(
					 Track(evil, {Clip(evil, evil + ".wav"), Clip(evil + "2", "tone.wav")}), {{evil, 1}})},
			{Marker(evil, 0.0, 0.2)})
			.dump());
	Words const commands[] = {{"info", "edit.otio"}, {"render", "edit.otio", "-o", "out.wav"},
		{"render", "edit.otio", "-o", "out", "--stems", "track"}, {"info", evil + ".otio"},
		{"render", "edit.otio", "-o", "out.wav", "--report", "out.json"},
		{"waveform", "edit.otio", "-o", "out.png"}, {"graph", "edit.otio", "-o", "out.dot"},
		{"info", "edit.otio", "--json"}};
	for (Words const& words : commands)
	{
		SCOPED_TRACE(testing::PrintToString(words));
		ProgramResult const result = Run(words);
		std::string const text = result.mOutput + result.mErrors;
		EXPECT_TRUE(std::none_of(text.begin(), text.end(),
			[](unsigned char inByte) { return (inByte < 0x20 && inByte != '\n') || inByte == 0x7f; }))
			<< text;
		EXPECT_THAT(text, testing::Not(HasSubstr("\xc2\x9b")));
		EXPECT_THAT(text, testing::Not(HasSubstr("\xe2\x80\xae")));
		EXPECT_THAT(text, testing::Not(HasSubstr("\nnext")));
		EXPECT_THAT(text, HasSubstr(words.back() == "--json" ? R"(\u001b[31mred\u009b1m)" : shown));
	}
	Json const info = Json::parse(Run({"info", "edit.otio", "--json"}).mOutput);
	EXPECT_EQ(info["clips"][0]["name"], evil);
	EXPECT_EQ(info["tracks"][0]["name"], evil);
	EXPECT_EQ(info["markers"][0]["name"], evil);
}

TEST_F(MessagesTest, NotesAndMissingMediaNameClipAndTrack)
{
	WriteBytes(mFolder / "edit.otio",
		Timeline({With(Track("", {}), {{"kind", "Video"}}),
					 Track("", {Clip("", "gone.wav"), Clip("b", "gone.wav"), Clip("c", "lost.wav"),
								   Clip("long", "tone.wav", 0.0, 4.0),
								   Stack({Track("", {Clip("", "tone.wav", 0.0, 4.0)})})}),
					 WithSettings(Track("Odd", {Clip("one", "tone.wav")}), {{"gian", 1}})})
			.dump());
	ProgramResult const result = Run({"render", "edit.otio", "-o", "out", "--stems", "track", "--quiet"});
	EXPECT_EQ(result.mExitCode, 3);
	constexpr char const* kLines[] = {
		R"x(2 clips are silent, the first one clip "clip 1" on "track 2 (A)": './gone.wav' does not exist (/tracks/children/1/children/0); pass its folder with --media DIR)x",
		R"x(clip "c" on "track 2 (A)" is silent: './lost.wav' does not exist (/tracks/children/1/children/2); pass its folder with --media DIR)x",
		R"x(ignored: clip "long" on "track 2 (A)": the clip extends 96000 samples beyond its media and is silent there (/tracks/children/1/children/3))x",
		R"x(ignored: clip "clip 1" on "track 2 (A) / stack 5 / track 1 (A)": the clip extends 96000 samples beyond its media and is silent there (/tracks/children/1/children/4/children/0/children/0))x",
		R"x(ignored: track "Odd": )x",
	};
	for (std::string const line : kLines)
	{
		EXPECT_THAT(result.mErrors, HasSubstr("sonaro: warning: " + line));
	}
	EXPECT_EQ(std::count(result.mErrors.begin(), result.mErrors.end(), '\n'), 5) << result.mErrors;
	EXPECT_TRUE(std::filesystem::exists(mFolder / "out/01 track 2 (A).wav"));
	EXPECT_TRUE(std::filesystem::exists(mFolder / "out/02 Odd.wav"));
}

TEST_F(MessagesTest, InfoShowsATimelineInItsTimecode)
{
	Json const timeline = Timeline(
		{Track("Dialogue", {Clip("one", "tone.wav"), Clip("two", "tone.wav"), Clip("", "gone.wav")})},
		{Marker("Verse", 0.4, 0.8)});
	WriteBytes(mFolder / "edit.otio", With(timeline, {{"global_start_time", Time(3600.4)}}).dump());
	EXPECT_EQ(Run({"info", "edit.otio"}).mOutput,
		"Timeline  test\n"
		"Start     01:00:00:10\n"
		"Length    00:00:03:00, 0:03.000 (144000 samples)\n"
		"Rate      25 fps, 48000 Hz\n"
		"Layout    stereo\n"
		"Tracks\n"
		"  Dialogue\n"
		"Clips\n"
		"  0:00.000 - 0:01.000  Dialogue: one, tone.wav from 0:00.000\n"
		"  0:01.000 - 0:02.000  Dialogue: two, tone.wav from 0:00.000\n"
		"  0:02.000 - 0:03.000  Dialogue: clip 3, missing: does not exist\n"
		"Markers\n"
		"  0:00.400 - 0:01.200  01:00:00:20 - 01:00:01:15  Verse\n"
		"Media\n"
		"  clips  format           encoding      channels     Hz    length  file\n"
		"      2  WAV (Microsoft)  32 bit float         2  48000  0:02.000  ./tone.wav\n"
		"Missing media\n"
		"  './gone.wav' does not exist: clip \"clip 3\" on \"Dialogue\" (/tracks/children/0/children/2)\n");
	Json const info = Json::parse(Run({"info", "edit.otio", "--json"}).mOutput);
	EXPECT_EQ(info["programme"]["startTimecode"], "01:00:00:10");
	EXPECT_EQ(info["programme"]["lengthTimecode"], "00:00:03:00");
	EXPECT_EQ(info["media"][0]["encoding"], "32 bit float");
	EXPECT_EQ(info["media"][0]["clips"], 2);
}

TEST_F(MessagesTest, TimecodeGoesWithTheClockWhereNumbersAreDropped)
{
	std::tuple<double, int, std::string> const cases[] = {
		{24, 86399, "00:59:59:23"},
		{23.976, 86400, "01:00:00:00"},
		{30, 1800, "00:01:00:00"},
		{29.97, 1799, "00:00:59;29"},
		{29.97, 1800, "00:01:00;02"},
		{29.97, 3597, "00:01:59;29"},
		{29.97, 3598, "00:02:00;02"},
		{29.97, 17981, "00:09:59;29"},
		{29.97, 17982, "00:10:00;00"},
		{29.97, 107892, "01:00:00;00"},
		{59.94, 3600, "00:01:00;04"},
		{59.94, 215784, "01:00:00;00"},
		{25, -30, "-00:00:01:05"},
	};
	for (auto const& [rate, frame, label] : cases)
	{
		SCOPED_TRACE(std::to_string(rate) + " " + label);
		Json timeline = Timeline({Track("A1", {Clip("one", "tone.wav")})});
		timeline["global_start_time"] = {{"OTIO_SCHEMA", "RationalTime.1"}, {"rate", rate}, {"value", frame}};
		WriteBytes(mFolder / "edit.otio", timeline.dump());
		Json const info = Json::parse(Run({"info", "edit.otio", "--json"}).mOutput);
		EXPECT_EQ(info["programme"]["startTimecode"], label);
	}
}

} // namespace SonaroHost::Testing::MessagesTest
