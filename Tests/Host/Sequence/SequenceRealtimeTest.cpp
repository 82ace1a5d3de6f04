#include "RandomSequence.h"
#include "SonaroHost/Engine/RenderContextScope.h"
#include "SonaroHost/Sequence/SequenceGraph.h"
#include "Support/RealtimeGuard.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>

namespace SonaroHost::Sequence::Testing::SequenceRealtimeTest
{
namespace
{

TEST(SequenceGraph, PullingNeitherAllocatesNorLocks)
{
	constexpr unsigned kBlockFrames = 512;
	constexpr unsigned kSeeds = 60;
	unsigned heardBlocks = 0;
	for (unsigned seed = 0; seed < kSeeds; ++seed)
	{
		bool const isPlayback = seed % 2 == 1;
		bool const isReverse = seed % 3 == 2;
		SCOPED_TRACE(testing::Message() << "seed " << seed);
		RandomSequence const random = MakeRandomSequence(seed);
		Description sequence = *random.mSequence;
		if (seed % 4 == 1 && !FindField(sequence.mLayout).empty())
		{
			HearWithTwoEars({}, sequence);
		}
		SN::Prefetcher prefetcher{.mReverse = isReverse};
		RenderContextScope const context(
			kBlockFrames, SN::kTimeMax, SN::ImmutableString("test"), isPlayback ? &prefetcher : nullptr);
		SequenceGraph const graph(
			sequence, context.Get(), random.mFrameRate, isPlayback ? &prefetcher : nullptr);
		dsp::AudioBuffer block(graph.GetLayout().size(), kBlockFrames);
		std::int64_t const first = 0;
		std::int64_t const end = GetLength(*random.mSequence).ToFrame64(random.mFrameRate);
		SN::IAudioGenerator& generator = *graph.GetGenerator();
		generator.InitializeAudioFilters();
		generator.Preroll(SN::TickTime(isReverse ? end : first, random.mFrameRate), isReverse);

		SN::Testing::RealtimeGuard const guard;
		for (std::int64_t done = 0; done < end - first;)
		{
			std::int64_t const count = std::min<std::int64_t>(kBlockFrames, end - first - done);
			block.SetUseSize(static_cast<unsigned>(count));
			std::int64_t const frame = isReverse ? end - done - count : first + done;
			generator.GetAudioData(SN::TickTime(frame, random.mFrameRate), block, isReverse);
			heardBlocks += block.IsSilent() ? 0 : 1;
			done += count;
		}
		ASSERT_EQ(guard.GetAllocations(), 0);
		ASSERT_EQ(guard.GetLocks(), 0);
		generator.ShutdownAudioFilters();
	}
	// Silence would prove little.
	EXPECT_GT(heardBlocks, 1000u);
}

} // namespace
} // namespace SonaroHost::Sequence::Testing::SequenceRealtimeTest
