// What the program says, run as a shell runs it: refusals, what is wrong with a command line, names from files.

#include "Media.h"
#include "ProgramRun.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cctype>
#include <set>
#include <sstream>

namespace SonaroHost::Testing
{
namespace
{

using testing::HasSubstr;
using testing::StartsWith;
using Json = nlohmann::json;
using Words = std::vector<std::string>;

constexpr int kRate = 48000;

// Frames at 25 a second.
std::string Range(long long inStart, long long inLength)
{
	auto const time = [](long long inValue)
	{ return R"({"OTIO_SCHEMA": "RationalTime.1", "rate": 25, "value": )" + std::to_string(inValue) + "}"; };
	return R"({"OTIO_SCHEMA": "TimeRange.1", "start_time": )" + time(inStart) + R"(, "duration": )" +
		   time(inLength) + "}";
}

std::string Object(std::string const& inSchema, std::string const& inKeys)
{
	return R"({"OTIO_SCHEMA": ")" + inSchema + "\"" + (inKeys.empty() ? "" : ", " + inKeys) + "}";
}

std::string Clip(std::string const& inName, std::string const& inMedia, long long inLength = 25)
{
	return Object("Clip.1", "\"name\": " + Json(inName).dump() + ", \"source_range\": " + Range(0, inLength) +
								", \"media_reference\": " +
								Object("ExternalReference.1", "\"target_url\": " + Json(inMedia).dump()));
}

std::string Children(std::string const& inChildren)
{
	return "\"children\": [" + inChildren + "]";
}

std::string Track(std::string const& inName, std::string const& inChildren, std::string const& inKeys = {})
{
	return Object("Track.1",
		"\"kind\": \"Audio\", \"name\": " + Json(inName).dump() + ", " + Children(inChildren) + inKeys);
}

std::string Timeline(std::string const& inTracks, std::string const& inKeys = {})
{
	return Object(
		"Timeline.1", "\"name\": \"test\", \"tracks\": " + Object("Stack.1", Children(inTracks) + inKeys));
}

// A clip within so many nested stacks, each alone on a track of the one around it.
std::string Nested(std::size_t inLevels)
{
	std::string content = Clip("deep", "tone.wav");
	for (std::size_t level = 0; level < inLevels; ++level)
	{
		content = Object("Stack.1", Children(Track("", content)));
	}
	return Timeline(Track("A1", content));
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

class MessagesTest : public testing::Test
{
protected:
	void SetUp() override
	{
		WriteSound(mFolder / "tone.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, MakeSound(2, kRate, 2 * kRate));
		WriteBytes(mFolder / "edit.otio", Timeline(Track("A1", Clip("one", "tone.wav"))));
	}

	ProgramResult Run(Words const& inArguments)
	{
		ProgramStart start;
		start.mArguments = inArguments;
		start.mFolder = mFolder.Get().string();
		return RunProgram(SONARO_COMMAND, start);
	}

	TemporaryFolder mFolder;
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
	constexpr long long kFiftyHours = 50LL * 3600 * 25;
	Case const cases[] = {
		// Found by the reader.
		{"{\n\"a\": }", ", line 2, column 6: ", ""},
		{Object("Clip.1", ""), ": ", "only a Timeline"},
		{Timeline(Track("A1", Clip("c", "tone.wav", -1))),
			", /tracks/children/0/children/0/source_range/duration", "must not be negative"},
		{Timeline(Track("A1", "", R"(, "metadata": {"sonaro": {"output": "gone"}})")),
			", /tracks/children/0/metadata/sonaro/output: ", "no submix of that name"},
		// Found when it is laid out.
		{Timeline(""), ", /tracks: ", "has no length"},
		// Found when the graph is built.
		{Timeline(Track("A1",
			 Object("Gap.1", "\"source_range\": " + Range(0, kFiftyHours)) + "," + Clip("c", "tone.wav"))),
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
	EXPECT_THAT(refusal["remedy"], HasSubstr("take levels out"));
}

TEST_F(MessagesTest, AWrongWordNamesTheNearestRightOne)
{
	struct Case
	{
		Words mWords;
		std::string mMessage;
	};
	Case const cases[] = {
		{{"render", "a.otio", "--reprot", "x.json"}, "there is no option '--reprot'; did you mean --report?"},
		{{"render", "a.otio", "-o", "x.wav", "--normalise=-16"}, "did you mean --normalize?"},
		{{"render", "a.wav", "--outptu", "x.wav"}, "there is no option '--outptu'; did you mean --output?"},
		{{"render", "a.wav", "-o", "x.wav", "--over"},
			"there is no option '--over' (see sonaro render --help)"},
		{{"render", "a.wav", "-o", "x.wav", "--limit"}, "did you mean --limit-dbtp?"},
		{{"waveform", "a.wav", "--heigth", "9"}, "did you mean --height? (see sonaro waveform --help)"},
		{{"graph", "a.otio", "--meida", "."}, "did you mean --media?"},
		{{"info", "a.wav", "--jsno"}, "did you mean --json?"},
		{{"info", "a.wav", "--colour\x1b[31m"}, R"(there is no option '--colour\x1b[31m' (see)"},
		{{"rendr", "a.wav"}, "there is no command 'rendr'; did you mean render?"},
		{{"inof"}, "did you mean info?"},
		{{"edit.otio"}, "there is no command 'edit.otio' (see sonaro --help)"},
		{{"--verison"}, "there is no option '--verison'; did you mean --version?"},
		{{}, "give a command (see sonaro --help)"},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(testing::PrintToString(test.mWords));
		ProgramResult const result = Run(test.mWords);
		EXPECT_EQ(result.mExitCode, 2);
		EXPECT_THAT(result.mErrors, HasSubstr(test.mMessage));
	}
}

TEST_F(MessagesTest, HelpGroupsOptionsByWhatTheyAreFor)
{
	struct Case
	{
		std::string mCommand;
		std::string mOption;
		std::string mGroup;
	};
	Case const cases[] = {
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
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mCommand + " " + test.mOption);
		std::istringstream help(Run({test.mCommand, "--help"}).mOutput);
		std::string group;
		for (std::string line; std::getline(help, line) && line.find(test.mOption) == std::string::npos;)
		{
			group = !line.empty() && line.back() == ':' && line.front() != ' ' ? line : group;
		}
		EXPECT_EQ(group, test.mGroup);
	}
}

TEST_F(MessagesTest, EveryExitCodeOfTheHelpIsMetAndThereIsNoOther)
{
	WriteBytes(mFolder / "missing.otio",
		Timeline(Track("A1", Clip("one", "tone.wav") + "," + Clip("two", "gone.wav"))));
	struct Case
	{
		int mExitCode;
		Words mWords;
	};
	Case const cases[] = {
		{0, {"--help"}},
		{0, {"--version"}},
		{0, {"render", "edit.otio", "-o", "out.wav"}},
		{0, {"render", "tone.wav", "-o", "out.wav"}},
		{0, {"waveform", "edit.otio", "-o", "out.png"}},
		{0, {"graph", "edit.otio", "-o", "out.dot"}},
		{0, {"info", "missing.otio"}},
		{1, {"render", "gone.wav", "-o", "out.wav"}},
		{1, {"render", "tone.wav", "-o", "no/such/folder.wav"}},
		{1, {"render", "missing.otio", "-o", "out.wav", "--strict"}},
		{1, {"info", "gone.otio"}},
		{2, {}},
		{2, {"render", "edit.otio"}},
		{2, {"render", "edit.otio", "-o", "out.wav", "--speed", "2"}},
		{2, {"waveform", "tone.wav", "-o", "out.xyz"}},
		{3, {"render", "missing.otio", "-o", "out.wav"}},
		{3, {"waveform", "missing.otio", "-o", "out.png"}},
		{3, {"graph", "missing.otio", "-o", "out.dot"}},
	};
	std::set<int> met;
	for (Case const& test : cases)
	{
		SCOPED_TRACE(testing::PrintToString(test.mWords));
		EXPECT_EQ(Run(test.mWords).mExitCode, test.mExitCode);
		met.insert(test.mExitCode);
	}
	std::istringstream help(Run({"--help"}).mOutput);
	std::set<int> told;
	bool isTold = false;
	for (std::string line; std::getline(help, line);)
	{
		isTold = line == "Exit codes:" || (isTold && !line.empty());
		if (isTold && line.size() > 2 && std::isdigit(static_cast<unsigned char>(line[2])))
		{
			told.insert(line[2] - '0');
		}
	}
	EXPECT_EQ(told, met);
}

TEST_F(MessagesTest, CommandsSayWhatTheyTake)
{
	WriteBytes(mFolder / "notes.txt", "This is no sound.\n");
	std::filesystem::create_directory(mFolder / "takes");
	struct Case
	{
		Words mWords;
		std::string mMessage;
	};
	constexpr char const* kSounds = " takes sound files (such as WAV, AIFF, FLAC, Ogg and MP3) and timelines";
	Case const cases[] = {
		{{"graph", "tone.wav", "-o", "out.svg"}, "is no timeline by its name; graph draws timelines (.otio"},
		{{"graph", "takes", "-o", "out.svg"}, "is no timeline by its name; graph draws timelines (.otio"},
		{{"graph", "gone.wav", "-o", "out.svg"}, "'gone.wav': does not exist; graph draws timelines (.otio"},
		{{"waveform", "notes.txt", "-o", "out.png"}, std::string("waveform") + kSounds},
		{{"waveform", "takes", "-o", "out.png"}, "is a folder, not a sound file; waveform takes sound files"},
		{{"render", "notes.txt", "-o", "out.wav"}, std::string("render") + kSounds},
		{{"info", "takes"}, std::string("info") + kSounds},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(testing::PrintToString(test.mWords));
		ProgramResult const result = Run(test.mWords);
		EXPECT_EQ(result.mExitCode, 1);
		EXPECT_THAT(result.mErrors, HasSubstr(test.mMessage));
	}
}

TEST_F(MessagesTest, OddFilesAndWrongWordsGetAReasonAndARemedy)
{
	WriteBytes(mFolder / "empty.otio", " \n");
	WriteBytes(mFolder / "binary.otio", std::string("\0\1\2", 3));
	WriteBytes(mFolder / "noise.wav", "RIFFnoise");
	std::filesystem::create_directory(mFolder / "folder.otioz");
	struct Case
	{
		int mExitCode;
		Words mWords;
		std::string mMessage;
	};
	Case const cases[] = {
		{1, {"info", ""}, "the name of the input is empty; give the name of a file"},
		{1, {"info", "empty.otio"}, "'empty.otio': is empty"},
		{1, {"info", "binary.otio"}, "'binary.otio': is no OpenTimelineIO file"},
		{1, {"info", "folder.otioz"},
			"is a folder and no zip archive; a bundle that is a folder ends in .otiod"},
		{1, {"info", "noise.wav"}, "; info takes sound files"},
		{2, {"graph", "edit.otio", "-o", "out.svg", "--depth", "-1"}, "--depth: "},
		{2, {"render", "tone.wav", "-o", "a.wav", "-o", "b.wav"},
			"--output is given more than once; give it once"},
		{2, {"render", "tone.wav", "-o"}, "--output needs a value"},
		{2, {"render", "tone.wav", "-o", "out.wav", "--rate", "fast"},
			"--rate: 'fast' is no number that fits"},
		{2, {"waveform", "tone.wav", "-o", "out.png", "--width", "32767", "--height", "32767"},
			"is too large for a bitmap; draw it smaller or as .svg"},
		{2, {"waveform", "edit.otio", "-o", "out.png", "--width", "32767", "--height", "32767"},
			"is too large for a bitmap; draw it smaller or as .svg"},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(testing::PrintToString(test.mWords));
		ProgramResult const result = Run(test.mWords);
		EXPECT_EQ(result.mExitCode, test.mExitCode);
		EXPECT_THAT(result.mErrors, HasSubstr(test.mMessage));
		EXPECT_THAT(result.mErrors, testing::Not(HasSubstr(".;")));
	}
}

TEST_F(MessagesTest, NamesFromFilesCannotCommandATerminal)
{
	// Colours, the 8-bit form of the same in UTF-8 and as a bare byte, a bell, a new line, the other direction of writing.
	std::string const evil = "\x1b[31mred\xc2\x9b"
							 "1mbold\a\nnext\xe2\x80\xaeltr\x7f";
	std::string const shown = R"(\x1b[31mred\u009b1mbold\x07\x0anext\u202eltr\u007f)";
	WriteBytes(mFolder / "edit.otio",
		Timeline(Track(evil, Clip(evil, evil + ".wav") + "," + Clip(evil + "2", "tone.wav"),
					 R"(, "metadata": {"sonaro": {)" + Json(evil).dump() + ": 1}}"),
			R"(, "markers": [)" +
				Object("Marker.2", "\"name\": " + Json(evil).dump() + ", \"marked_range\": " + Range(0, 5)) +
				"]"));
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
		Timeline(Object("Track.1", R"("kind": "Video", )" + Children("")) + "," +
				 Track("", Clip("", "gone.wav") + "," + Clip("b", "gone.wav") + "," + Clip("c", "lost.wav") +
							   "," + Clip("long", "tone.wav", 100) + "," +
							   Object("Stack.1", Children(Track("", Clip("", "tone.wav", 100))))) +
				 "," + Track("Odd", Clip("one", "tone.wav"), R"(, "metadata": {"sonaro": {"gian": 1}})")));
	ProgramResult const result = Run({"render", "edit.otio", "-o", "out", "--stems", "track", "--quiet"});
	EXPECT_EQ(result.mExitCode, 3);
	constexpr char const* kLines[] = {
		R"x(2 clips are silent, the first one clip "clip 1" on "track 2 (A)": './gone.wav' does not exist (/tracks/children/1/children/0))x",
		R"x(clip "c" on "track 2 (A)" is silent: './lost.wav' does not exist (/tracks/children/1/children/2))x",
		R"x(clip "long" on "track 2 (A)": it reaches 96000 samples beyond its media; silence is there (/tracks/children/1/children/3))x",
		R"x(clip "clip 1" on "track 2 (A) / stack 5 / track 1 (A)": it reaches 96000 samples beyond its media; silence is there (/tracks/children/1/children/4/children/0/children/0))x",
		R"x(track "Odd": )x",
	};
	for (std::string const line : kLines)
	{
		EXPECT_THAT(result.mErrors, HasSubstr("sonaro: warning: " + line));
	}
	EXPECT_EQ(std::count(result.mErrors.begin(), result.mErrors.end(), '\n'), 5) << result.mErrors;
	EXPECT_TRUE(std::filesystem::exists(mFolder / "out/01 track 2 (A).wav"));
	EXPECT_TRUE(std::filesystem::exists(mFolder / "out/02 Odd.wav"));
}

TEST_F(MessagesTest, InfoTellsATimelineInItsTimecode)
{
	std::string const start =
		R"(, "global_start_time": {"OTIO_SCHEMA": "RationalTime.1", "rate": 25, "value": 90010})";
	std::string const markers =
		R"(, "markers": [)" + Object("Marker.2", "\"name\": \"Verse\", \"marked_range\": " + Range(10, 20)) +
		"]";
	std::string timeline =
		Timeline(Track("Dialogue",
					 Clip("one", "tone.wav") + "," + Clip("two", "tone.wav") + "," + Clip("", "gone.wav")),
			markers);
	timeline.insert(timeline.size() - 1, start);
	WriteBytes(mFolder / "edit.otio", timeline);
	EXPECT_EQ(Run({"info", "edit.otio"}).mOutput,
		"Timeline  test\n"
		"Start     01:00:00:10\n"
		"Length    00:00:03:00, 0:03.000 (144000 samples)\n"
		"Rate      25 frames a second, 48000 Hz\n"
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
	struct Case
	{
		std::string mRate;
		long long mFrame;
		std::string mLabel;
	};
	Case const cases[] = {
		{"24", 86399, "00:59:59:23"},
		{"23.976", 86400, "01:00:00:00"},
		{"30", 1800, "00:01:00:00"},
		{"29.97", 1799, "00:00:59;29"},
		{"29.97", 1800, "00:01:00;02"},
		{"29.97", 3597, "00:01:59;29"},
		{"29.97", 3598, "00:02:00;02"},
		{"29.97", 17981, "00:09:59;29"},
		{"29.97", 17982, "00:10:00;00"},
		{"29.97", 107892, "01:00:00;00"},
		{"59.94", 3600, "00:01:00;04"},
		{"59.94", 215784, "01:00:00;00"},
		{"25", -30, "-00:00:01:05"},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mRate + " " + test.mLabel);
		std::string timeline = Timeline(Track("A1", Clip("one", "tone.wav")));
		timeline.insert(timeline.size() - 1,
			", \"global_start_time\": " +
				Object("RationalTime.1",
					"\"rate\": " + test.mRate + ", \"value\": " + std::to_string(test.mFrame)));
		WriteBytes(mFolder / "edit.otio", timeline);
		Json const info = Json::parse(Run({"info", "edit.otio", "--json"}).mOutput);
		EXPECT_EQ(info["programme"]["startTimecode"], test.mLabel);
	}
}

} // namespace
} // namespace SonaroHost::Testing
