// Renders in pieces by the program: what is joined is what one render writes, and all that could not be is refused.

#include "Host/ProgramRun.h"
#include "Host/TimelineJson.h"
#include "Support/Trials.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <iterator>
#include <span>
#include <string>
#include <thread>
#include <vector>

namespace SonaroHost::Testing::FarmCommandTest
{

namespace
{

using testing::AllOf;
using testing::HasSubstr;

constexpr int kRate = 48000;

// Clips of other rates and speeds, nests, levels that move, and silence; noise in all of them.
Json MakeEdit()
{
	Json const fade = {{"keyframes", {{{"time", 0.2}, {"value", -30.0}}, {{"time", 3.0}, {"value", 3.0}}}}};
	Json const nest = WithSettings(
		Stack({Track("inner", {Gap(0.2), Clip("in", "other.wav", 0.1, 1.2)})}), {{"speed", 1.25}});
	Json const backwards = WithSettings(Clip("two", "other.wav", 0.3, 1.6), {{"speed", -0.75}});
	return Timeline(
		{WithSettings(Track("A1", {Clip("one", "tone.wav", 0.0, 1.0), Gap(0.6), nest}), {{"gain", fade}}),
			Track("A2", {backwards}),
			WithSettings(Track("A3", {Gap(1.5), Clip("three", "tone.wav", 0.4, 1.5)}), {{"pan", 0.3}})});
}

class FarmCommand : public ProgramTest
{
protected:
	void SetUp() override
	{
		mStart.mFolder = mFolder.Get();
		WriteSound(mFolder / "tone.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, MakeSound(2, kRate, 2 * kRate));
		WriteSound(mFolder / "other.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, MakeSound(1, 44100, 2 * 44100));
		Write("edit.otio", MakeEdit().dump());
		std::filesystem::create_directory(mFolder / "pieces");
	}

	void Write(std::string const& inName, std::string const& inText) const
	{
		std::ofstream(mFolder / inName, std::ios::binary) << inText;
	}
	std::string Read(std::string const& inName) const
	{
		std::ifstream file(mFolder / inName, std::ios::binary);
		return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
	}

	void Do(Words const& inArguments) const
	{
		ProgramResult const result = Run(Join(inArguments, {"--quiet"}));
		ASSERT_EQ(result.mExitCode, 0) << inArguments.front() << ": " << result.mErrors;
	}
	void Plan(int inPieces, Words const& inOptions = {}) const
	{
		Do(Join(
			{"plan", "edit.otio", "--pieces", std::to_string(inPieces), "-o", "plan.json", "--track-levels"},
			inOptions));
	}
	std::size_t CountPieces() const { return Json::parse(Read("plan.json"))["pieces"].size(); }
	void RenderPieces() const
	{
		for (std::size_t piece = 1; piece <= CountPieces(); ++piece)
		{
			std::string const number = std::to_string(piece);
			Do({"render", "--piece", "plan.json#" + number, "-o", "pieces/" + number + ".wav", "--jobs",
				std::to_string(1 + piece % 3)});
		}
	}
	// A report without what is another for each run.
	Json ReadReport(std::string const& inName) const
	{
		Json report = Json::parse(Read(inName));
		report.erase("elapsedSeconds");
		report.erase("realTimeFactor");
		report["outputs"][0].erase("path");
		return report;
	}
};

TEST_F(FarmCommand, PiecesJoinToTheBytesAndTheReportOfOneRender)
{
	Words const cases[] = {
		{},
		{"--normalize", "-20", "--limit-dbtp", "-6", "--bits", "16"},
		{"--gain-db", "-4", "--fade-in", "0.4", "--fade-out", "1.1", "--bits", "24", "--layout", "mono"},
		{"--rate", "44100", "--resampling", "draft", "--range", "0.31..2.7", "--limit-dbtp", "-20"},
		{"--binaural", "--yaw", "-30", "--tail", "0.25"},
		{"--keep-pitch", "--block", "700", "--strict=media"},
	};
	for (Words const& options : std::span(cases).first(SN::Testing::GetNumTrials(6) == 6 ? 6 : 2))
	{
		SCOPED_TRACE(testing::PrintToString(options));
		Do(Join({"render", "edit.otio", "-o", "one.wav", "--report", "one.json"}, options));
		for (int const pieces : options.empty() ? std::vector<int>{1, 3, 16} : std::vector<int>{4})
		{
			SCOPED_TRACE(testing::Message() << pieces << " pieces");
			Plan(pieces, options);
			EXPECT_EQ(CountPieces(), static_cast<std::size_t>(pieces));
			RenderPieces();
			Do({"join", "plan.json", "-o", "joined.wav", "--pieces-in", "pieces", "--report", "joined.json"});
			EXPECT_TRUE(Read("one.wav") == Read("joined.wav"));
			EXPECT_EQ(ReadReport("one.json"), ReadReport("joined.json"));
		}
	}
}

TEST_F(FarmCommand, PiecesArePlayableAndSmallWithoutLevelsOfTracks)
{
	Plan(2);
	RenderPieces();
	auto const withTracks = std::filesystem::file_size(mFolder / "pieces/1.wav");
	EXPECT_THAT(Run({"info", "pieces/1.wav"}).mOutput, HasSubstr("stereo"));
	Do({"plan", "edit.otio", "--pieces", "2", "-o", "plan.json"});
	RenderPieces();
	EXPECT_LT(2 * std::filesystem::file_size(mFolder / "pieces/1.wav"), withTracks);
	Do({"join", "plan.json", "-o", "joined.wav", "--pieces-in", "pieces/1.wav", "pieces/2.wav"});
	Do({"render", "edit.otio", "-o", "one.wav"});
	EXPECT_TRUE(Read("one.wav") == Read("joined.wav"));
	ExpectRefusal({"join", "plan.json", "-o", "x.wav", "--pieces-in", "pieces", "--report", "x.json"}, 2,
		{"--report", "--track-levels"});
}

TEST_F(FarmCommand, WhatRemembersAllIsOnePieceWithItsReason)
{
	Plan(4, {"--resampling", "engine"});
	Json const plan = Json::parse(Read("plan.json"));
	EXPECT_EQ(plan["pieces"].size(), 1u);
	EXPECT_THAT(plan["programme"]["whole"].get<std::string>(), HasSubstr("goes on from what it read before"));
}

TEST_F(FarmCommand, PiecesOfAnotherStateAreRefused)
{
	Plan(3);
	RenderPieces();
	Words const render{"render", "--piece", "plan.json#2", "-o", "x.wav"};
	Words const join{"join", "plan.json", "-o", "x.wav", "--pieces-in", "pieces"};
	auto const expectRefusals = [&](Words const& inTexts)
	{
		ExpectRefusal(render, 1, inTexts);
		ExpectRefusal(join, 1, inTexts);
	};
	std::string const plan = Read("plan.json");
	std::string const edit = Read("edit.otio");
	Write("edit.otio", edit + " ");
	expectRefusals({"edit.otio", "is not what", "plan the render again"});
	Write("edit.otio", edit);
	auto const time = std::filesystem::last_write_time(mFolder / "other.wav");
	std::filesystem::last_write_time(mFolder / "other.wav", time + std::chrono::seconds(1));
	expectRefusals({"other.wav", "is not what", "plan the render again"});
	std::filesystem::last_write_time(mFolder / "other.wav", time);
	std::filesystem::rename(mFolder / "other.wav", mFolder / "gone.wav");
	ExpectRefusal(render, 1, {"other.wav", "is not there"});
	std::filesystem::rename(mFolder / "gone.wav", mFolder / "other.wav");
	std::string other = plan;
	other.replace(other.find("\"sonaro "), 9, "\"sonaro 9");
	Write("plan.json", other);
	ExpectRefusal(render, 1, {"was planned by another program", "plan the render again"});
	ExpectRefusal(join, 1, {"pieces 1 to 3 of 3 are missing", "is a piece of another plan"});
	Write("plan.json", plan.substr(0, plan.size() / 2));
	expectRefusals({"plan.json", "is not a plan"});
	EXPECT_FALSE(std::filesystem::exists(mFolder / "x.wav"));
}

// The state of a file does not show that the disk below it fails, which would make pieces silent.
TEST_F(FarmCommand, MediaThatCannotBeReadAnyMoreAreRefused)
{
	Write("other.wav", "no sound");
	ASSERT_EQ(Run({"plan", "edit.otio", "--pieces", "2", "-o", "plan.json", "--quiet"}).mExitCode, 3);
	Json plan = Json::parse(Read("plan.json"));
	ASSERT_EQ(plan["programme"]["missingClips"], 2);
	plan["programme"]["missingClips"] = 0;
	Write("plan.json", plan.dump());
	ExpectRefusal({"render", "--piece", "plan.json#1", "-o", "x.wav"}, 1,
		{"other.wav", "cannot be read", "plan the render again"});
}

// Whatever is changed in a plan by hand, no piece of it is rendered.
TEST_F(FarmCommand, NumbersThatAreNotThoseOfTheTimelineAreRefused)
{
	Plan(3);
	Json const plan = Json::parse(Read("plan.json"));
	std::pair<char const*, Json> const cases[] = {
		{"/version", 4.4e127},
		{"/programme/missingEffects", -1},
		{"/programme/rate", 0},
		{"/programme/rate", 32000},
		{"/programme/rate", std::int64_t{1} << 40},
		{"/programme/channels", 0},
		{"/programme/channels", 1},
		{"/programme/channels", -1},
		{"/programme/block", 0},
		{"/programme/block", 2.5},
		{"/programme/block", std::int64_t{1} << 40},
		{"/programme/block", 2048},
		{"/programme/firstSample", -4096},
		{"/programme/samples", 0},
		{"/pieces/2/samples", std::int64_t{1} << 62},
		{"/pieces/2", plan["pieces"][1]},
		{"/timeline/path", ""},
		{"/options", {{{"option", "--stems"}, {"values", {"track"}}}}},
	};
	std::vector<RefusedWords> refused;
	auto const add = [&](Json const& inPlan, std::string const& inPlace)
	{
		std::string const name = std::to_string(refused.size()) + ".json";
		Write(name, inPlan.dump());
		refused.push_back(
			{1, {"render", "--piece", name + "#1", "-o", "x.wav"}, {"'" + name + "', " + inPlace}});
	};
	for (auto const& [place, value] : cases)
	{
		Json edited = plan;
		edited[Json::json_pointer(place)] = value;
		add(edited, place);
	}
	// A programme that is shorter than the timeline, with pieces that fit it; and pieces off the blocks.
	Json shorter = plan;
	shorter["pieces"].erase(2);
	shorter["programme"]["samples"] = plan["pieces"][2]["firstSample"];
	add(shorter, "/programme/samples");
	Json shifted = plan;
	shifted["pieces"][0]["samples"] = plan["pieces"][0]["samples"].get<int>() + 1;
	shifted["pieces"][1]["firstSample"] = plan["pieces"][1]["firstSample"].get<int>() + 1;
	shifted["pieces"][1]["samples"] = plan["pieces"][1]["samples"].get<int>() - 1;
	add(shifted, "/pieces/1");
	ExpectRefusals(refused);
	EXPECT_FALSE(std::filesystem::exists(mFolder / "x.wav"));
}

// Planned in one place with a folder of media, rendered in another with one of another name.
TEST_F(FarmCommand, PlansMoveWithTheirTimelines)
{
	std::filesystem::create_directories(mFolder / "here/media");
	for (char const* const name : {"tone.wav", "other.wav"})
	{
		std::filesystem::rename(mFolder / name, mFolder / "here/media" / name);
	}
	for (std::string const& input : {std::string("here/edit.otio"), (mFolder / "here/edit.otio").string()})
	{
		SCOPED_TRACE(input);
		std::filesystem::rename(mFolder / "edit.otio", mFolder / "here/edit.otio");
		Do({"plan", input, "--pieces", "2", "-o", "plan.json", "--media", "here/media"});
		Do({"render", input, "-o", "one.wav", "--media", "here/media"});
		std::filesystem::rename(mFolder / "here/edit.otio", mFolder / "edit.otio");
		std::filesystem::rename(mFolder / "here/media", mFolder / "there");
		ProgramResult const lost = Run({"render", "--piece", "plan.json#1", "-o", "x.wav"});
		EXPECT_EQ(lost.mExitCode, 1);
		EXPECT_THAT(lost.mErrors, AllOf(HasSubstr("media' is not there and is not searched"),
									  HasSubstr("tone.wav': is not there")));
		for (std::string const& piece : {std::string("1"), std::string("2")})
		{
			Do({"render", "--piece", "plan.json#" + piece, "-o", piece + ".wav", "--media", "there"});
		}
		Do({"join", "plan.json", "-o", "joined.wav", "--media", "there"});
		EXPECT_TRUE(Read("one.wav") == Read("joined.wav"));
		std::filesystem::rename(mFolder / "there", mFolder / "here/media");
	}
}

TEST_F(FarmCommand, MissingAndDamagedPiecesAreNamed)
{
	Plan(5);
	RenderPieces();
	Words const join{"join", "plan.json", "-o", "x.wav", "--pieces-in", "pieces"};
	std::string const piece = Read("pieces/2.wav");
	Write("pieces/2.wav", piece.substr(0, piece.size() - 5));
	std::filesystem::remove(mFolder / "pieces/4.wav");
	std::filesystem::remove(mFolder / "pieces/5.wav");
	ExpectRefusal(join, 1, {"pieces 2 and 4 to 5 of 5 are missing", "pieces/2.wav", "not whole"});
	// The first page of memory is never there, and so reading this fails.
	std::filesystem::create_symlink("/proc/self/mem", mFolder / "pieces/6.wav");
	ExpectRefusal(join, 1, {"pieces 2 and 4 to 5 of 5 are missing", "pieces/6.wav", "cannot be read"});
	std::filesystem::remove(mFolder / "pieces/6.wav");
	std::filesystem::create_directory(mFolder / "more");
	Do({"render", "--piece", "plan.json#4", "-o", "more/a.wav"});
	Do({"render", "--piece", "plan.json#5", "-o", "more/b.wav"});
	// One bit of the samples, of the tracks' records, and of the facts.
	for (std::size_t const place : {piece.size() / 10, piece.size() / 2, piece.size() - 30})
	{
		std::string damaged = piece;
		damaged[place] = static_cast<char>(damaged[place] ^ 4);
		Write("pieces/2.wav", damaged);
		ExpectRefusal(Join(join, {"more", "--report", "x.json"}), 1, {"pieces/2.wav", "damaged"});
	}
	ExpectRefusal(Join(join, {"more", "edit.otio"}), 1, {"'edit.otio' is not a piece"});
	EXPECT_FALSE(std::filesystem::exists(mFolder / "x.wav"));
	Write("more/c.wav", piece);
	Do(Join(join, {"more"}));
	// A copy whose samples are damaged stands in the way of none that is not, whichever is found first.
	std::string damaged = piece;
	damaged[piece.size() / 10] ^= 4;
	Write("more/0.wav", damaged);
	Write("more/d.wav", damaged);
	std::filesystem::remove(mFolder / "pieces/2.wav");
	std::filesystem::remove(mFolder / "x.wav");
	Do(Join(join, {"more"}));
}

// By their names, by links, as the report as well, and where a piece is there twice.
TEST_F(FarmCommand, NoOutputReplacesThePlanOrAPiece)
{
	Plan(2);
	RenderPieces();
	Write("pieces/copy.wav", Read("pieces/1.wav"));
	std::filesystem::create_symlink("pieces/2.wav", mFolder / "link.wav");
	std::filesystem::create_symlink("plan.json", mFolder / "plan.wav");
	std::string const inputs = Read("plan.json") + Read("pieces/1.wav") + Read("pieces/2.wav");
	Words const join{"join", "plan.json", "--pieces-in", "pieces", "-o"};
	ExpectRefusals({
		{2, Join(join, {"pieces/1.wav"}), {"pieces/1.wav", "is the input itself"}},
		{2, Join(join, {"pieces/copy.wav"}), {"pieces/copy.wav", "is the input itself"}},
		{2, Join(join, {"link.wav"}), {"link.wav", "is the input itself"}},
		{2, Join(join, {"x.wav", "--report", "pieces/../pieces/2.wav"}), {"2.wav", "is the input itself"}},
		{2, Join(join, {"x.wav", "--report", "plan.json"}), {"plan.json", "is the input itself"}},
		{2, {"render", "--piece", "plan.json#1", "-o", "plan.json"}, {"plan.json", "is the input itself"}},
		{2, {"render", "--piece", "plan.json#1", "-o", "plan.wav"}, {"plan.wav", "is the input itself"}},
	});
	EXPECT_TRUE(inputs == Read("plan.json") + Read("pieces/1.wav") + Read("pieces/2.wav"));
}

TEST_F(FarmCommand, WhatCannotBePlannedIsRefused)
{
	Plan(2);
	RenderPieces();
	Write("old.wav", "old");
	ExpectRefusals({
		{2, {"plan", "edit.otio", "--pieces", "2", "-o", "x.json", "--stems", "track"},
			{"--stems", "one file"}},
		{2, {"plan", "edit.otio", "--pieces", "2", "-o", "x.json", "--tail", "auto"},
			{"--tail auto", "time"}},
		{2, {"plan", "tone.wav", "--pieces", "2", "-o", "x.json"}, {"tone.wav", "is no timeline"}},
		{2, {"plan", "edit.otio", "--pieces", "2", "-o", "tone.wav"}, {"tone.wav"}},
		{2, {"plan", "edit.otio", "--pieces", "2", "-o", "x.json", "--join-output", "x.xyz"},
			{"x.xyz", "use --format"}},
		{2, {"plan", "edit.otio", "--pieces", "2", "-o", "x.json", "--join-output", "tone.wav"},
			{"tone.wav", "media file"}},
		{2,
			{"plan", "edit.otio", "--pieces", "2", "-o", "x.json", "--join-output", "x.flac", "--bits",
				"32f"},
			{"x.flac", "FLAC cannot hold floats"}},
		{1,
			{"plan", "edit.otio", "--pieces", "2", "-o", "x.json", "--join-output", "old.wav",
				"--no-overwrite"},
			{"old.wav", "already exists"}},
		{2, {"join", "plan.json", "-o", "x.xyz", "--pieces-in", "pieces"}, {"x.xyz", "plan with --format"}},
		{2, {"join", "plan.json", "-o", "x.wav", "--pieces-in", "nowhere"}, {"'nowhere' does not exist"}},
		{2, {"render", "--piece", "#1", "-o", "x.wav"}, {"plan.json#17"}},
		{1, {"render", "--piece", ".#1", "-o", "x.wav"}, {"'.'", "sonaro plan wrote"}},
		{2, {"render", "--piece", "plan.json#3", "-o", "x.wav"}, {"no piece 3", "1 to 2"}},
		{2, {"render", "--piece", "plan.json#0", "-o", "x.wav"}, {"no piece 0"}},
		{2, {"render", "--piece", "plan.json", "-o", "x.wav"}, {"plan.json#17"}},
		{2, {"render", "--piece", "plan.json#1", "-o", "x.wav", "--normalize", "-16"},
			{"--normalize", "plan"}},
		{2, {"render", "--piece", "plan.json#1", "-o", "tone.wav"}, {"tone.wav"}},
	});
}

// Whatever the moment, nothing is left that a join takes, and the piece can be rendered after it.
TEST_F(FarmCommand, AKilledPieceLeavesNothingThatIsJoined)
{
	Plan(2);
	Do({"render", "edit.otio", "-o", "one.wav"});
	Do({"render", "--piece", "plan.json#1", "-o", "pieces/1.wav"});
	Words const join{"join", "plan.json", "-o", "x.wav", "--pieces-in", "pieces"};
	for (int const milliseconds : {2, 8, 15, 25, 40})
	{
		auto const kill = [milliseconds](int inProcess)
		{
			std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
			::kill(inProcess, SIGKILL);
		};
		ProgramResult const killed =
			Run({"render", "--piece", "plan.json#2", "-o", "pieces/2.wav", "--quiet"}, kill);
		if (std::filesystem::exists(mFolder / "pieces/2.wav"))
		{
			break;
		}
		EXPECT_EQ(killed.mSignal, SIGKILL);
		ExpectRefusal(join, 1, {"piece 2 of 2 is missing"});
	}
	Do({"render", "--piece", "plan.json#2", "-o", "pieces/2.wav"});
	Do(join);
	EXPECT_TRUE(Read("one.wav") == Read("x.wav"));
}

} // namespace

} // namespace SonaroHost::Testing::FarmCommandTest
