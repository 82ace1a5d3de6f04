// Operations of audio buffers, in samples a second over two channels.

#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/AudioDelayBuffer.h"
#include "zorvaudiodsp/AudioSubBuffer.h"
#include "zorvaudiodsp/GainRamp.h"

#include <benchmark/benchmark.h>

namespace
{

constexpr unsigned long long kChannels = 2;

template <class Operation>
void Run(benchmark::State& ioState, Operation const& inOperation)
{
	auto const samples = static_cast<unsigned>(ioState.range(0));
	dsp::AudioBuffer a(kChannels, samples);
	dsp::AudioBuffer b(kChannels, samples);
	for (auto _ : ioState)
	{
		inOperation(a, b);
		benchmark::ClobberMemory();
	}
	ioState.SetItemsProcessed(static_cast<std::int64_t>(ioState.iterations()) * samples * kChannels);
}

void BM_BufferCopyFrom(benchmark::State& ioState)
{
	Run(ioState, [](dsp::AudioBuffer& ioA, dsp::AudioBuffer& ioB) { ioA.CopyFrom(ioB); });
}

void BM_BufferMix(benchmark::State& ioState)
{
	Run(ioState, [](dsp::AudioBuffer& ioA, dsp::AudioBuffer& ioB) { ioA.Mix(ioB); });
}

void BM_BufferMixOfSilence(benchmark::State& ioState)
{
	Run(ioState,
		[](dsp::AudioBuffer& ioA, dsp::AudioBuffer& ioB)
		{
			ioB.Zero();
			ioA.Mix(ioB);
		});
}

void BM_BufferScale(benchmark::State& ioState)
{
	Run(ioState, [](dsp::AudioBuffer& ioA, dsp::AudioBuffer&) { ioA *= 0.999f; });
}

void BM_BufferReverse(benchmark::State& ioState)
{
	Run(ioState, [](dsp::AudioBuffer& ioA, dsp::AudioBuffer&) { ioA.Reverse(); });
}

void BM_WindowIntoSilence(benchmark::State& ioState)
{
	dsp::AudioSubBuffer window;
	window.Init(kChannels);
	Run(ioState,
		[&](dsp::AudioBuffer& ioA, dsp::AudioBuffer& ioB)
		{
			ioA.Zero();
			window.Assign(ioA, ioA.GetUseSize() / 2);
			window.CopyFrom(ioB);
		});
}

void BM_RampMoving(benchmark::State& ioState)
{
	dsp::GainRamp ramp(48000.0f, 0.0f, 0.005f);
	float target = 1.0f;
	Run(ioState,
		[&](dsp::AudioBuffer& ioA, dsp::AudioBuffer&)
		{
			ramp.SetTargetGain(target);
			target = 1.5f - target;
			ramp.Process(ioA);
		});
}

void BM_RampAtRest(benchmark::State& ioState)
{
	dsp::GainRamp ramp(48000.0f, 0.5f, 0.005f);
	Run(ioState, [&](dsp::AudioBuffer& ioA, dsp::AudioBuffer&) { ramp.Process(ioA); });
}

void BM_DelayLine(benchmark::State& ioState)
{
	dsp::AudioDelayBuffer line;
	line.Init(kChannels, 1000, static_cast<unsigned>(ioState.range(0)));
	Run(ioState,
		[&](dsp::AudioBuffer& ioA, dsp::AudioBuffer& ioB)
		{
			line.Write(ioA);
			line.Read(ioB);
		});
}

BENCHMARK(BM_BufferCopyFrom)->Arg(64)->Arg(512)->Arg(4096);
BENCHMARK(BM_BufferMix)->Arg(64)->Arg(512)->Arg(4096);
BENCHMARK(BM_BufferMixOfSilence)->Arg(64)->Arg(512)->Arg(4096);
BENCHMARK(BM_BufferScale)->Arg(64)->Arg(512)->Arg(4096);
BENCHMARK(BM_BufferReverse)->Arg(64)->Arg(512)->Arg(4096);
BENCHMARK(BM_WindowIntoSilence)->Arg(64)->Arg(512)->Arg(4096);
BENCHMARK(BM_RampMoving)->Arg(64)->Arg(512)->Arg(4096);
BENCHMARK(BM_RampAtRest)->Arg(64)->Arg(512)->Arg(4096);
BENCHMARK(BM_DelayLine)->Arg(64)->Arg(512)->Arg(4096);

} // namespace
