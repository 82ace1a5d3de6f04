#include "SonaroHost/Files/OutputPlan.h"
#include "Media.h"
#include "SonaroHost/Base/HostError.h"

#include <gmock/gmock.h>

namespace SonaroHost::Testing
{
namespace
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
			return (error.GetKind() == HostError::Kind::eOutput ? "1 " : "2 ") + std::string(error.what());
		}
	}

	TemporaryFolder mFolder;
};

TEST_F(OutputPlanTest, NothingThatSomebodyNeedsIsWritten)
{
	struct Case
	{
		char const* mOutput;
		// Of the refusal, after the exit code; null for none.
		char const* mText;
	};
	Case const cases[] = {
		{"mix.wav", nullptr},
		{"old.wav", nullptr},
		{"media/mix.wav", nullptr},
		{"MIX.wav", nullptr},
		{"in.wav", "2 is the input itself"},
		{"edit.otio", "2 is the input itself"},
		{"edit.otiod", "2 is the input itself"},
		{"media/../in.wav", "2 is the input itself"},
		{"media/b.wav", "2 is a medium"},
		{"linked/b.wav", "2 is a medium"},
		{"linked/../media/sub/../b.wav", "2 is a medium"},
		{"soft.wav", "2 is a medium"},
		{"softer.wav", "2 is a medium"},
		{"hard.wav", "2 is a medium"},
		{"media/B.WAV", nullptr},
		{"media/gone.wav", "2 is where a medium"},
		{"linked/gone.wav", "2 is where a medium"},
		{"dangling.wav", "2 is where a medium"},
		{"none/../media/gone.wav", "2 is where a medium"},
		{"media/Gone.wav", "2 is where a medium"},
		{"cased/Gone.wav", "2 is where a medium"},
		{"cased/gONE.WAV", "2 is where a medium"},
		{"up.wav", "2 is where a medium"},
		{"absent", "2 has the name of a folder in which a medium"},
		{"nowhere", "2 has the name of a folder in which a medium"},
		{"nothing", "2 has the name of a folder in which a medium"},
		{"absent/deep/d.wav", "2 is where a medium"},
		{"absent/deep/f.wav", "1 does not exist; create it first"},
		{"media", "1 it is a folder"},
		{"edit.otiod/content.otio", "2 is the input itself"},
		{"edit.otiod/new.wav", "2 lies in the input"},
		{"edit.otiod/media/c.wav", "2 lies in the input"},
		{"inside/new.wav", "2 lies in the input"},
		{"other.otiod/content.otio", "2 would change the bundle"},
		{"other.otiod/new.wav", "2 would change the bundle"},
		{"content.wav", "2 is the input itself"},
		{"other.otioz", "2 would replace a timeline"},
		{"zipped.wav", "2 would replace a timeline"},
		{"new.otioz", nullptr},
		{"none/mix.wav", "1 does not exist; create it first"},
		{"in.wav/mix.wav", "1 create it first"},
	};
	for (Case const& test : cases)
	{
		// As the only output, and beside another one.
		for (Run const& run : {Run{{test.mOutput}}, Run{{"first.wav", test.mOutput}}})
		{
			SCOPED_TRACE(testing::PrintToString(run.mFiles));
			std::string const refusal = Refuse(run);
			EXPECT_EQ(refusal.empty(), test.mText == nullptr) << refusal;
			if (test.mText)
			{
				EXPECT_EQ(refusal.substr(0, 1), std::string(test.mText).substr(0, 1)) << refusal;
				EXPECT_THAT(refusal, HasSubstr(test.mText + 2));
			}
		}
	}
}

TEST_F(OutputPlanTest, OutputsDoNotStandInEachOthersWay)
{
	constexpr bool kKeeps = false;
	struct Case
	{
		Run mRun;
		char const* mText;
	};
	Case const cases[] = {
		{{{"mix.wav", "mix.json"}}, nullptr},
		{{{"mix.wav", "mix.wav"}}, "is the same as the output"},
		{{{"mix.wav", "media/../mix.wav"}}, "is the same as the output"},
		{{{"media/x.wav", "linked/x.wav"}}, "is the same as the output"},
		{{{"cased/x.wav", "cased/X.WAV"}}, "is the same as the output"},
		{{{"media/x.wav", "media/X.WAV"}}, nullptr},
		{{{"-", "mix.wav"}}, nullptr},
		{{{"-", "-"}}, "the standard output takes one output"},
		{{{"old.wav"}, {}, kKeeps}, "exists already"},
		{{{"mix.wav", "old.wav"}, {}, kKeeps}, "exists already"},
		{{{"mix.wav", "-"}, {}, kKeeps}, nullptr},
		{{{"stems/1.wav", "report.json"}, "stems"}, nullptr},
		{{{"stems/1.wav", "stems/report.json"}, "stems"}, nullptr},
		{{{"a/b/stems/1.wav", "a/b/report.json", "a/r.json"}, "a/b/stems"}, nullptr},
		{{{"a/b/stems/1.wav", "a/c/report.json"}, "a/b/stems"}, "create it first"},
		{{{"stems/1.wav", "stems/1.wav"}, "stems"}, "is the same as the output"},
		{{{"stems/1.wav", "stems"}, "stems"}, "has the name of a folder of the output"},
		{{{"a", "a/b/1.wav"}, "a/b"}, "has the name of a folder of the output"},
		{{{"empty/1.wav"}, "empty"}, nullptr},
		{{{"media/1.wav"}, "media"}, nullptr},
		{{{"media/1.wav", "media/b.wav"}, "media"}, "is a medium"},
		{{{"edit.otiod/media/1.wav"}, "edit.otiod/media"}, "lies in the input"},
		{{{"edit.otiod/1.wav"}, "edit.otiod"}, "edit.otiod"},
		{{{"other.otiod/new/1.wav"}, "other.otiod/new"}, "would change the bundle"},
		{{{"absent/1.wav"}, "absent"}, nullptr},
		{{{"absent/deep/d.wav"}, "absent/deep"}, "is where a medium"},
		{{{"media/gone.wav/1.wav"}, "media/gone.wav"}, "is where a medium"},
		{{{"old.wav/1.wav"}, "old.wav"}, "a file has its name"},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(testing::PrintToString(test.mRun.mFiles) + " " + test.mRun.mStems);
		std::string const refusal = Refuse(test.mRun);
		EXPECT_EQ(refusal.empty(), test.mText == nullptr) << refusal;
		EXPECT_THAT(refusal, HasSubstr(test.mText ? test.mText : ""));
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

} // namespace
} // namespace SonaroHost::Testing
