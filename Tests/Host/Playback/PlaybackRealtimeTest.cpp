#include "Deck.h"
#include "SonaroHost/Playback/NullDevice.h"
#include "Support/RealtimeGuard.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>

namespace SonaroHost::Playback::Testing::PlaybackRealtimeTest
{
namespace
{

// Whatever the playback does meanwhile, in time and when it is late.
TEST(Playback, TheDevicesThreadNeitherAllocatesNorLocks)
{
	constexpr std::int64_t kFrames = 1'000'000;
	constexpr unsigned kBlocks = 60;
	Programme const programme = MakeCountingProgramme(kFrames);
	NullDevice device(0.0);
	Playback playback(programme, device, {.mAheadSeconds = 0.005, .mDeviceBlockFrames = 128});
	std::function<void()> const actions[] = {
		[&] { playback.Play(); },
		[&] { playback.Seek(kFrames / 2); },
		[&] {
			playback.SetLoop(ProgrammeRange{kFrames / 2, 1000});
		},
		[&] { playback.SetSpeed(-1.5); },
		[&] { playback.Stop(); },
		[&] { playback.Scrub(kFrames / 3); },
		[&] { playback.TakeOver(MakeCountingProgramme(kFrames, 0.5f)); },
		[&] { playback.SetSpeed(1.0); },
		[&] { playback.Play(); },
	};
	auto const advance = [&]
	{
		SN::Testing::RealtimeGuard const guard;
		device.Advance(128);
		ASSERT_EQ(guard.GetAllocations(), 0);
		ASSERT_EQ(guard.GetLocks(), 0);
	};
	for (auto const& action : actions)
	{
		action();
		for (unsigned block = 0; block < kBlocks; ++block)
		{
			// The last ones come too fast for the render thread.
			if (block < kBlocks / 2)
			{
				playback.WaitUntilFilled(std::chrono::seconds(10));
			}
			ASSERT_NO_FATAL_FAILURE(advance());
		}
	}
	// The render thread may be quick enough for a while.
	for (int block = 0; block < 1'000'000 && playback.GetState().mMisses == 0; ++block)
	{
		ASSERT_NO_FATAL_FAILURE(advance());
	}
	EXPECT_GT(playback.GetState().mMisses, 0u);
}

} // namespace
} // namespace SonaroHost::Playback::Testing::PlaybackRealtimeTest
