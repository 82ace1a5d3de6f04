// Merging item lists: as many source items as target items, each cutting the one beneath it. The time of
// an item should not depend on the length of the lists.

#include "Sonaro/AudioTrackRenderableItems.h"

#include <benchmark/benchmark.h>

namespace
{

using namespace SN;

constexpr FrameRate k48000Hz{5292000};

AudioTrackRenderableItemList MakeList(long long inCount, long long inOffset, long long inLength)
{
	AudioTrackRenderableItemList items;
	for (long long i = 0; i < inCount; ++i)
	{
		items.push_back(CreateSilentAudioTrackRenderableItem(TickTime(i * 1000 + inOffset, k48000Hz),
			TickTime(i * 1000 + inOffset + inLength, k48000Hz), k48000Hz));
	}
	return items;
}

void Merge(benchmark::State& ioState, long long inOffset, long long inLength)
{
	AudioTrackRenderableItemList const source = MakeList(ioState.range(0), inOffset, inLength);
	for (auto _ : ioState)
	{
		ioState.PauseTiming();
		AudioTrackRenderableItemList target = MakeList(ioState.range(0), 0, 1000);
		ioState.ResumeTiming();
		MergeAudioTrackRenderableItems(source, target, k48000Hz);
		benchmark::DoNotOptimize(target.data());
	}
	ioState.SetItemsProcessed(static_cast<std::int64_t>(ioState.iterations()) * ioState.range(0));
}

void BM_MergeInsideItems(benchmark::State& ioState)
{
	Merge(ioState, 250, 500);
}

void BM_MergeAcrossItems(benchmark::State& ioState)
{
	Merge(ioState, 500, 1000);
}

void BM_MergeIntoTheFront(benchmark::State& ioState)
{
	Merge(ioState, -1000000000, 1000);
}

BENCHMARK(BM_MergeInsideItems)->Arg(10)->Arg(1000)->Arg(100000);
BENCHMARK(BM_MergeAcrossItems)->Arg(10)->Arg(1000)->Arg(100000);
BENCHMARK(BM_MergeIntoTheFront)->Arg(10)->Arg(1000)->Arg(100000);

} // namespace
