// Places that are looked up while others are noted.

#include "Playback/Feed/PlaceHistory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace SonaroHost::Playback::Testing
{
namespace
{

// More readers than processors: some are held up in the middle of a look, for longer than all slots last.
TEST(PlaceHistory, AReaderThatIsHeldUpStillFindsAPlaceThatWasNoted)
{
	constexpr int kReaders = 8;
	constexpr int kLooks = 1'000'000;
	PlaceHistory history;
	history.Note(0, 1.0, 0.0);
	std::atomic<bool> isOver = false;
	std::thread writer(
		[&]
		{
			for (std::int64_t frame = 1; !isOver; ++frame)
			{
				history.Note(frame, 1.0, 0.0);
			}
		});
	std::atomic<int> unknown = 0;
	std::vector<std::thread> readers;
	for (int reader = 0; reader < kReaders; ++reader)
	{
		readers.emplace_back(
			[&]
			{
				for (int look = 0; look < kLooks; ++look)
				{
					unknown += history.Find(std::int64_t{1} << 62) == 1.0 ? 0 : 1;
				}
			});
	}
	for (std::thread& reader : readers)
	{
		reader.join();
	}
	isOver = true;
	writer.join();
	EXPECT_EQ(unknown, 0);
}

} // namespace
} // namespace SonaroHost::Playback::Testing
