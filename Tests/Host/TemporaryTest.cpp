#include "SonaroHost/Files/Temporary.h"
#include "Media.h"
#include "SonaroHost/Files/OutputFile.h"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>

#include <unistd.h>

namespace SonaroHost::Testing::TemporaryTest
{

using testing::ElementsAre;
using testing::StartsWith;

TEST(Temporary, GoesWithItsObjectUnlessItWasNamed)
{
	TemporaryFolder const folder;
	{
		Temporary const removed(
			[&]
			{
				std::filesystem::create_directories(folder / "a/b/c");
				return folder / "a";
			});
		Temporary named(
			[&]
			{
				WriteBytes(folder / "d", "new");
				return folder / "d";
			});
		EXPECT_EQ(named.Rename(folder / "none/e"), std::errc::no_such_file_or_directory);
		EXPECT_FALSE(named.Rename(folder / "e"));
	}
	EXPECT_THAT(folder.List(), ElementsAre("e"));
}

// In a process of its own, since nothing temporary can be made there afterwards.
TEST(TemporaryDeathTest, AllGoWhileOtherThreadsAreAtWork)
{
	TemporaryFolder const folder;
	auto const work = [&]
	{
		std::atomic<int> written = 0;
		Temporary const bundle(
			[&]
			{
				std::filesystem::create_directory(folder / "bundle");
				return folder / "bundle";
			});
		std::thread unpacking(
			[&]
			{
				for (int number = 0;; ++number)
				{
					std::FILE* const file =
						std::fopen((folder / ("bundle/" + std::to_string(number))).c_str(), "w");
					if (file)
					{
						std::fclose(file);
					}
				}
			});
		std::thread writing(
			[&]
			{
				for (;; ++written)
				{
					OutputFile file(folder / ("whole" + std::to_string(written % 4)));
					file.Write("whole", 5);
					file.Commit();
				}
			});
		while (written < 100)
		{
			std::this_thread::yield();
		}
		Temporary::RemoveAll();
		_exit(0);
	};
	EXPECT_EXIT(work(), testing::ExitedWithCode(0), "");
	for (std::string const& name : folder.List())
	{
		EXPECT_THAT(name, StartsWith("whole"));
		EXPECT_EQ(ReadBytes(folder / name), "whole");
	}
	EXPECT_EQ(folder.List().size(), 4u);
}

} // namespace SonaroHost::Testing::TemporaryTest
