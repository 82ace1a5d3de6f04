// Reading back what was rendered ahead, beside the bare copy that this makes.

#include "AudioRender/Source/AudioGeneratorSource.h"
#include "Support/SimpleGenerator.h"
#include "zorvaccelerate/VectorArithmetic.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <benchmark/benchmark.h>

namespace
{

using namespace SN;
using namespace SN::Testing;

constexpr unsigned kFrames = 512;

// Silence that is not flagged.
class Tone final : public SimpleGenerator
{
public:
	Tone()
		: SimpleGenerator(2)
	{
	}

	void GetAudioData(TickTime const&, dsp::AudioBuffer& inBuffer, bool) override
	{
		inBuffer.ClearSilenceFlags(dsp::SilenceFlags::All());
	}
};

constexpr long long kLength = 64 * kFrames;

// Blocks that begin in the middle of a chunk for an offset, so that each touches two.
void BM_ReadPrefetchedAudio(benchmark::State& ioState)
{
	auto const source = AudioGeneratorSource::Create(
		zorvcore::classref::MakeObject<Tone>(), 4 * kFrames, TickTime(kLength, k48000Hz));
	source->PrefetchAudioData(0, kTimeZero, static_cast<unsigned>(kLength));
	dsp::AudioBuffer buffer(2, kFrames);
	long long frame = ioState.range(0);
	for (auto _ : ioState)
	{
		source->ReadPrefetchedAudio(TickTime(frame, k48000Hz), buffer);
		benchmark::ClobberMemory();
		frame = frame + 5 * kFrames < kLength ? frame + 4 * kFrames : ioState.range(0);
	}
}

void BM_BareStereoCopy(benchmark::State& ioState)
{
	dsp::AudioBuffer source(2, static_cast<unsigned>(kLength));
	dsp::AudioBuffer buffer(2, kFrames);
	long long frame = 0;
	for (auto _ : ioState)
	{
		for (unsigned channel = 0; channel < 2; ++channel)
		{
			zorvaccelerate::utility::Copy(
				kFrames, source.GetChannel(channel) + frame, buffer.GetChannel(channel));
		}
		benchmark::ClobberMemory();
		frame = frame + 5 * kFrames < kLength ? frame + 4 * kFrames : 0;
	}
}

BENCHMARK(BM_BareStereoCopy);
BENCHMARK(BM_ReadPrefetchedAudio)->Arg(0)->Arg(4 * kFrames - 100);

} // namespace
