// Requests through the prefetch queue: from the caller to a source that does nothing and the notify, in
// batches of several sizes. Processor time is that of the whole process, the prefetch thread included.

#include "Sonaro/AudioPrefetch.h"
#include "zorvcore/threads/Gate.h"

#include <benchmark/benchmark.h>

namespace
{

using namespace SN;
using zorvcore::classref::MakeObject;

class CountingSource final : public Implements<CountingSource, IAsyncAudioSource>
{
public:
	void PrefetchAudioData(unsigned long long const&, TickTime const&, unsigned) override { ++mReads; }
	int ReadPrefetchedAudio(TickTime const&, dsp::AudioBuffer&) override { return eNotImplemented; }
	int GetPrefetchState() override { return eNotImplemented; }

	// The prefetch thread's; to be read once the last batch was notified.
	std::int64_t mReads = 0;
};

class CountingNotify final : public Implements<CountingNotify, AudioPrefetch::IAudioPrefetchNotify>
{
public:
	explicit CountingNotify(std::int64_t inExpected)
		: mExpected(inExpected)
	{
	}

	void Complete(int) override
	{
		if (--mExpected == 0)
		{
			mAllTold.Open();
		}
	}

	void Wait() { mAllTold.PassThrough(); }

private:
	std::int64_t mExpected;
	zorvcore::threads::Gate mAllTold{false};
};

void BM_MillionRequests(benchmark::State& ioState)
{
	constexpr std::int64_t kRequests = 1000000;
	std::int64_t const batches = kRequests / ioState.range(0);
	auto const source = MakeObject<CountingSource>();
	std::vector<AudioPrefetch::PrefetchRequest> const batch(
		static_cast<std::size_t>(ioState.range(0)), {0, source, TickTime(), 256});
	for (auto _ : ioState)
	{
		auto const notify = MakeObject<CountingNotify>(batches);
		for (std::int64_t i = 0; i < batches; ++i)
		{
			AudioPrefetch::PrefetchAudio(AudioPrefetch::PlaybackPriority, batch, 0, notify);
		}
		notify->Wait();
	}
	if (source->mReads != static_cast<std::int64_t>(ioState.iterations()) * kRequests)
	{
		ioState.SkipWithError("A request was lost");
	}
	ioState.SetItemsProcessed(static_cast<std::int64_t>(ioState.iterations()) * kRequests);
}

BENCHMARK(BM_MillionRequests)
	->Arg(1)
	->Arg(10)
	->Arg(1000)
	->MeasureProcessCPUTime()
	->UseRealTime()
	->Unit(benchmark::kMillisecond);

} // namespace
