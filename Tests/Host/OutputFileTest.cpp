#include "SonaroHost/Files/OutputFile.h"
#include "Media.h"
#include "Refusal.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Files/FileFingerprint.h"
#include "SonaroHost/Files/WholeFile.h"
#include "SonaroHost/Render/FarmPlan.h"

#include <gmock/gmock.h>

#include <sys/resource.h>
#include <unistd.h>

namespace SonaroHost::Testing::OutputFileTest
{

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

void Write(OutputFile& ioFile, std::string const& inText)
{
	ioFile.Write(inText.data(), static_cast<std::int64_t>(inText.size()));
}

TEST(OutputFileTest, RemovesWhatWasLeftOfTheSameOutputAndNothingElse)
{
	TemporaryFolder const folder;
	std::string const leftovers[] = {".mix.wav.sonaro-01234567.tmp", ".mix.wav.sonaro-89abcdef.tmp"};
	std::string const others[] = {
		".mix.wav.sonaro-0123456.tmp",
		".mix.wav.sonaro-0123456g.tmp",
		".mix.wav.sonaro-01234567.tmp2",
		".other.wav.sonaro-01234567.tmp",
		"mix.wav.sonaro-01234567.tmp",
		"mix.wav",
	};
	for (std::string const& name : leftovers)
	{
		WriteBytes(folder / name, "left");
	}
	for (std::string const& name : others)
	{
		WriteBytes(folder / name, "kept");
	}
	std::filesystem::create_directory(folder / ".mix.wav.sonaro-aaaaaaaa.tmp");
	std::filesystem::create_symlink("mix.wav", folder / ".mix.wav.sonaro-bbbbbbbb.tmp");
	{
		OutputFile const file(folder / "mix.wav");
		std::vector<std::string> const names = folder.List();
		EXPECT_THAT(names, AllOf(Not(Contains(leftovers[0])), Not(Contains(leftovers[1])), SizeIs(9)));
	}
	EXPECT_THAT(folder.List(), SizeIs(8));
	for (std::string const& name : others)
	{
		EXPECT_EQ(ReadBytes(folder / name), "kept") << name;
	}
}

TEST(OutputFileTest, LeavesTheTemporaryFileOfAnotherRunAloneUntilItHasItsName)
{
	TemporaryFolder const folder;
	OutputFile first(folder / "mix.wav");
	Write(first, "first");
	{
		OutputFile second(folder / "mix.wav");
		Write(second, "second");
		second.Commit();
	}
	first.Close();
	OutputFile third(folder / "mix.wav");
	EXPECT_EQ(ReadBytes(folder / "mix.wav"), "second");
	first.Commit();
	EXPECT_EQ(ReadBytes(folder / "mix.wav"), "first");
	third.Commit();
	EXPECT_EQ(ReadBytes(folder / "mix.wav"), "");
	EXPECT_THAT(folder.List(), ElementsAre("mix.wav"));
}

TEST(OutputFileTest, KeepsWhatAnotherProgramMadeInTheMeantimeWhereItMayNotReplaceIt)
{
	TemporaryFolder const folder;
	for (char const* const older : {"", "file", "link"})
	{
		SCOPED_TRACE(older);
		std::filesystem::remove(folder / "mix.wav");
		{
			OutputFile file(folder / "mix.wav");
			Write(file, "new");
			if (older == std::string("file"))
			{
				WriteBytes(folder / "mix.wav", "old");
			}
			else if (older == std::string("link"))
			{
				std::filesystem::create_symlink("nowhere", folder / "mix.wav");
			}
			std::string const refusal =
				GetRefusalOf([&file] { file.Commit(false); }, HostError::Kind::kOutput);
			EXPECT_EQ(refusal.empty(), older == std::string());
		}
		EXPECT_THAT(folder.List(), ElementsAre("mix.wav"));
		EXPECT_EQ(std::filesystem::is_symlink(folder / "mix.wav"), older == std::string("link"));
	}
	WriteBytes(folder / "mix.wav", "old");
	OutputFile file(folder / "mix.wav");
	file.Commit(true);
	EXPECT_EQ(ReadBytes(folder / "mix.wav"), "");
}

TEST(OutputFileTest, GoesWhereLinksLeadAndTakesTheLongestNames)
{
	TemporaryFolder const folder;
	std::filesystem::create_directory(folder / "sub");
	std::filesystem::create_symlink("sub/second", folder / "first");
	std::filesystem::create_symlink("target.wav", folder / "sub/second");
	for (char const* const text : {"not there yet", "there"})
	{
		OutputFile file(folder / "first");
		Write(file, text);
		file.Commit();
		EXPECT_EQ(ReadBytes(folder / "sub/target.wav"), text);
		EXPECT_TRUE(std::filesystem::is_symlink(folder / "first"));
	}
	std::string longest;
	for (int i = 0; i < 127; ++i)
	{
		longest += "\u00e4";
	}
	OutputFile file(folder / longest);
	file.Commit();
	EXPECT_TRUE(std::filesystem::exists(folder / longest));
	std::filesystem::create_symlink("loop", folder / "loop");
	EXPECT_THROW(OutputFile(folder / "loop"), HostError);
}

// The sanitizer of undefined behaviour reads memory through pipes, for which there are no descriptors left.
#ifndef SONARO_SANITIZES_UNDEFINED
TEST(OutputFileTest, LeavesNothingWhereItMayNotOpenAllFilesThatItNeeds)
{
	TemporaryFolder const folder;
	rlimit before{};
	ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
	int const free = dup(STDOUT_FILENO);
	ASSERT_GE(free, 0);
	close(free);
	rlimit const one{static_cast<rlim_t>(free) + 1, before.rlim_max};
	ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &one), 0);
	std::string const refusal =
		GetRefusalOf([&] { OutputFile(folder / "mix.wav"); }, HostError::Kind::kOutput);
	setrlimit(RLIMIT_NOFILE, &before);
	EXPECT_THAT(refusal, AllOf(HasSubstr("mix.wav"), HasSubstr("Too many open files")));
	EXPECT_THAT(folder.List(), IsEmpty());
}
#endif

TEST(OutputFileTest, NoticesThatItWasShortened)
{
	TemporaryFolder const folder;
	WriteBytes(folder / "mix.wav", "old");
	{
		OutputFile file(folder / "mix.wav");
		Write(file, "0123456789");
		file.Seek(0, SEEK_SET);
		std::filesystem::resize_file(folder / folder.List().front(), 5);
		Write(file, "abc");
		std::string const refusal = GetRefusalOf([&file] { file.Commit(); }, HostError::Kind::kOutput);
		EXPECT_THAT(refusal, AllOf(HasSubstr("mix.wav"), HasSubstr("shortened")));
	}
	EXPECT_THAT(folder.List(), ElementsAre("mix.wav"));
	EXPECT_EQ(ReadBytes(folder / "mix.wav"), "old");
}

// The first bytes of a process's memory are a file that is there and cannot be read.
TEST(WholeFile, AReadThatFailsIsNotTheEnd)
{
	std::string const unreadable = "/proc/self/mem";
	std::string const reason = "'" + unreadable + "': cannot be read: Input/output error";
	EXPECT_EQ(GetRefusalOf([&] { ReadWholeFile(unreadable, "give another"); }), reason + "; give another");
	EXPECT_EQ(
		GetRefusalOf([&] { ReadFarmPlan(unreadable); }), reason + "; give the file that sonaro plan wrote");
	EXPECT_EQ(GetRefusalOf([&] { TakeFingerprint(unreadable); }), reason);
	EXPECT_EQ(GetRefusalOf([&] { TakeWholeFingerprint(unreadable); }), reason);
	TemporaryFolder const folder;
	EXPECT_THAT(GetRefusalOf([&] { GetFileLength(folder / "gone.wav"); }),
		testing::HasSubstr("gone.wav': cannot be read: No such file"));
	EXPECT_FALSE(TakeFingerprint(folder / "gone.wav").IsThere());
}

} // namespace SonaroHost::Testing::OutputFileTest
