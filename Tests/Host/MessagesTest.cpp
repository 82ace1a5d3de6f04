// What the program says, run as a shell runs it: refusals, what is wrong with a command line, names from files.

#include "Media.h"
#include "ProgramRun.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <algorithm>
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

} // namespace
} // namespace SonaroHost::Testing
