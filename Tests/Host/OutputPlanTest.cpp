#include "SonaroHost/Files/OutputPlan.h"
#include "Media.h"
#include "SonaroHost/Base/HostError.h"

#include <gmock/gmock.h>

namespace SonaroHost::Testing::OutputPlanTest
{

using testing::HasSubstr;

// A folder with something of everything that outputs must not touch.
class OutputPlanTest : public testing::Test
{
protected:
	void SetUp() override
	{
		for (char const* const name : {"media/sub", "edit.otiod/media", "other.otiod", "empty", "cased"})
		{
			std::filesystem::create_directories(mFolder / name);
		}
		for (char const* const name :
			{"in.wav", "edit.otio", "edit.otiod/content.otio", "media/b.wav", "other.otiod/content.otio",
				"other.otioz", "old.wav", "cased/a.txt", "edit.otiod/media/c.wav"})
		{
			WriteBytes(mFolder / name, name);
		}
		std::filesystem::create_symlink("media/b.wav", mFolder / "soft.wav");
		std::filesystem::create_symlink("soft.wav", mFolder / "softer.wav");
		std::filesystem::create_hard_link(mFolder / "media/b.wav", mFolder / "hard.wav");
		std::filesystem::create_hard_link(mFolder / "edit.otiod/content.otio", mFolder / "content.wav");
		std::filesystem::create_symlink("other.otioz", mFolder / "zipped.wav");
		std::filesystem::create_symlink("media/gone.wav", mFolder / "dangling.wav");
		std::filesystem::create_symlink("media", mFolder / "linked");
		std::filesystem::create_symlink("edit.otiod/media", mFolder / "inside");
		std::filesystem::create_symlink("nowhere", mFolder / "nothing");
		// As a folder looks that does not tell upper from lower case.
		std::filesystem::create_hard_link(mFolder / "cased/a.txt", mFolder / "cased/A.TXT");
	}

	struct Run
	{
		std::vector<std::string> mFiles;
		std::string mStems = {};
		bool mReplaces = true;
	};

	// Empty for none.
	std::string Refuse(Run const& inRun)
	{
		OutputPlan plan;
		for (std::string const& name : inRun.mFiles)
		{
			plan.mFiles.push_back(name == "-" ? std::filesystem::path(name) : mFolder / name);
		}
		plan.mFolder = inRun.mStems.empty() ? std::filesystem::path() : mFolder / inRun.mStems;
		for (char const* const name : {"in.wav", "edit.otio", "edit.otiod"})
		{
			plan.mInputs.push_back(mFolder / name);
		}
		for (char const* const name : {"media/b.wav", "media/gone.wav", "cased/Gone.wav", "absent/deep/d.wav",
				 "nothing/e.wav", "media/sub/../../up.wav"})
		{
			plan.mMedia.push_back(mFolder / name);
		}
		plan.mReplaces = inRun.mReplaces;
		try
		{
			plan.Check();
			return {};
		}
		catch (HostError const& error)
		{
			return (error.GetKind() == HostError::Kind::kOutput ? "1 " : "2 ") + std::string(error.what());
		}
	}

	void ExpectRefusal(Run const& inRun, char const* inText)
	{
		SCOPED_TRACE(testing::PrintToString(inRun.mFiles) + " " + inRun.mStems);
		std::string const refusal = Refuse(inRun);
		EXPECT_EQ(refusal.empty(), inText == nullptr) << refusal;
		if (inText)
		{
			EXPECT_THAT(refusal, testing::AllOf(testing::StartsWith({inText, 2}), HasSubstr(inText + 2)));
		}
	}

	TemporaryFolder mFolder;
};

struct PlanCase
{
	char const* mOutput;
	// Of the refusal, after the exit code; null for none.
	char const* mText;
};

constexpr PlanCase kSingleOutputs[] = {
	{"mix.wav", nullptr},
	{"old.wav", nullptr},
	{"media/mix.wav", nullptr},
	{"MIX.wav", nullptr},
	{"in.wav", "2 is the input itself"},
	{"edit.otio", "2 is the input itself"},
	{"edit.otiod", "2 is the input itself"},
	{"media/../in.wav", "2 is the input itself"},
	{"media/b.wav", "2 is a media file"},
	{"linked/b.wav", "2 is a media file"},
	{"linked/../media/sub/../b.wav", "2 is a media file"},
	{"soft.wav", "2 is a media file"},
	{"softer.wav", "2 is a media file"},
	{"hard.wav", "2 is a media file"},
	{"media/B.WAV", nullptr},
	{"media/gone.wav", "2 is where a media file"},
	{"linked/gone.wav", "2 is where a media file"},
	{"dangling.wav", "2 is where a media file"},
	{"none/../media/gone.wav", "2 is where a media file"},
	{"media/Gone.wav", "2 is where a media file"},
	{"cased/Gone.wav", "2 is where a media file"},
	{"cased/gONE.WAV", "2 is where a media file"},
	{"up.wav", "2 is where a media file"},
	{"absent", "2 has the name of a folder in which a media file"},
	{"nowhere", "2 has the name of a folder in which a media file"},
	{"nothing", "2 has the name of a folder in which a media file"},
	{"absent/deep/d.wav", "2 is where a media file"},
	{"absent/deep/f.wav", "1 does not exist; create it first"},
	{"media", "1 it is a folder"},
	{"edit.otiod/content.otio", "2 is the input itself"},
	{"edit.otiod/new.wav", "2 is inside the input"},
	{"edit.otiod/media/c.wav", "2 is inside the input"},
	{"inside/new.wav", "2 is inside the input"},
	{"other.otiod/content.otio", "2 is inside the bundle"},
	{"other.otiod/new.wav", "2 is inside the bundle"},
	{"content.wav", "2 is the input itself"},
	{"other.otioz", "2 would replace a timeline"},
	{"zipped.wav", "2 would replace a timeline"},
	{"new.otioz", nullptr},
	{"none/mix.wav", "1 does not exist; create it first"},
	{"in.wav/mix.wav", "1 create it first"},
};

TEST_F(OutputPlanTest, NothingThatSomebodyNeedsIsWritten)
{
	for (auto const& [output, text] : kSingleOutputs)
	{
		// As the only output, and beside another one.
		ExpectRefusal({{output}}, text);
		ExpectRefusal({{"first.wav", output}}, text);
	}
}

TEST_F(OutputPlanTest, OutputsDoNotStandInEachOthersWay)
{
	constexpr bool kKeeps = false;
	std::pair<Run, char const*> const cases[] = {
		{{{"mix.wav", "mix.json"}}, nullptr},
		{{{"mix.wav", "mix.wav"}}, "2 is the same file as the output"},
		{{{"mix.wav", "media/../mix.wav"}}, "2 is the same file as the output"},
		{{{"media/x.wav", "linked/x.wav"}}, "2 is the same file as the output"},
		{{{"cased/x.wav", "cased/X.WAV"}}, "2 is the same file as the output"},
		{{{"media/x.wav", "media/X.WAV"}}, nullptr},
		{{{"-", "mix.wav"}}, nullptr},
		{{{"-", "-"}}, "2 only one output can go to the standard output"},
		{{{"old.wav"}, {}, kKeeps}, "1 already exists"},
		{{{"mix.wav", "old.wav"}, {}, kKeeps}, "1 already exists"},
		{{{"mix.wav", "-"}, {}, kKeeps}, nullptr},
		{{{"stems/1.wav", "report.json"}, "stems"}, nullptr},
		{{{"stems/1.wav", "stems/report.json"}, "stems"}, nullptr},
		{{{"a/b/stems/1.wav", "a/b/report.json", "a/r.json"}, "a/b/stems"}, nullptr},
		{{{"a/b/stems/1.wav", "a/c/report.json"}, "a/b/stems"}, "1 create it first"},
		{{{"stems/1.wav", "stems/1.wav"}, "stems"}, "2 is the same file as the output"},
		{{{"stems/1.wav", "stems"}, "stems"}, "2 has the name of a folder of the output"},
		{{{"a", "a/b/1.wav"}, "a/b"}, "2 has the name of a folder of the output"},
		{{{"empty/1.wav"}, "empty"}, nullptr},
		{{{"media/1.wav"}, "media"}, nullptr},
		{{{"media/1.wav", "media/b.wav"}, "media"}, "2 is a media file"},
		{{{"edit.otiod/media/1.wav"}, "edit.otiod/media"}, "2 is inside the input"},
		{{{"edit.otiod/1.wav"}, "edit.otiod"}, "2 edit.otiod"},
		{{{"other.otiod/new/1.wav"}, "other.otiod/new"}, "2 is inside the bundle"},
		{{{"absent/1.wav"}, "absent"}, nullptr},
		{{{"absent/deep/d.wav"}, "absent/deep"}, "2 is where a media file"},
		{{{"media/gone.wav/1.wav"}, "media/gone.wav"}, "2 is where a media file"},
		{{{"old.wav/1.wav"}, "old.wav"}, "1 a file has that name"},
	};
	for (auto const& [run, text] : cases)
	{
		ExpectRefusal(run, text);
	}
}

TEST_F(OutputPlanTest, PathsFromWithinABundleAreSeenThrough)
{
	std::filesystem::path const before = std::filesystem::current_path();
	std::filesystem::current_path(mFolder / "other.otiod");
	OutputPlan plan;
	plan.mFiles = {"new.wav"};
	EXPECT_THROW(plan.Check(), HostError);
	std::filesystem::current_path(mFolder / "empty");
	EXPECT_NO_THROW(plan.Check());
	std::filesystem::current_path(before);
}

} // namespace SonaroHost::Testing::OutputPlanTest
