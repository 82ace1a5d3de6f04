// Sound fields for two ears: a second of sound at a time, at 48 kHz in blocks of 512 samples. Five milliseconds are half
// a percent of a core. The renderer of libspatialaudio stands beside it where that is installed, with and without its
// rotation; ours always turns the field.

#include "Sonaro/GraphFactory.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <benchmark/benchmark.h>

#include <algorithm>

#if defined(SONARO_HAS_SPATIALAUDIO) && defined(SONARO_KEMAR_MEASUREMENTS)
#include <spatialaudio/Ambisonics.h>
#define SONARO_BENCHMARKS_SPATIALAUDIO 1
#endif

namespace
{

constexpr unsigned kRate = 48000;
constexpr unsigned kFrames = 512;
constexpr unsigned kBlocks = (kRate + kFrames - 1) / kFrames;

dsp::AudioBuffer MakeField()
{
	dsp::AudioBuffer field(4, kFrames);
	for (unsigned channel = 0; channel < 4; ++channel)
	{
		for (unsigned i = 0; i < kFrames; ++i)
		{
			field.GetChannel(channel)[i] = 0.001f * static_cast<float>((i * (channel + 3)) % 401);
		}
	}
	return field;
}

// The first argument: the sample rate; the second one: degrees that the head turns in each block.
void BM_Binauralizer(benchmark::State& ioState)
{
	auto const rate = static_cast<unsigned>(ioState.range(0));
	auto const turn = static_cast<float>(ioState.range(1));
	auto const binauralizer =
		SN::GraphFactory().CreateAudioBinauralizer({.mSampleRate = rate, .mMaxFrames = kFrames});
	dsp::AudioBuffer const field = MakeField();
	dsp::AudioBuffer ears(2, kFrames);
	float yaw = 0.0f;
	for (auto _ : ioState)
	{
		for (unsigned block = 0; block < rate / kFrames + 1; ++block)
		{
			yaw = yaw > 360.0f ? 0.0f : yaw + turn;
			binauralizer->SetOrientation(0.0f, yaw, 0.0f);
			binauralizer->Process(field, ears);
			benchmark::ClobberMemory();
		}
	}
}
BENCHMARK(BM_Binauralizer)
	->Args({48000, 0})
	->Args({48000, 2})
	->Args({96000, 0})
	->Args({96000, 2})
	->Unit(benchmark::kMicrosecond);

#ifdef SONARO_BENCHMARKS_SPATIALAUDIO
// The argument: whether the field is turned.
void BM_BinauralizerOfLibspatialaudio(benchmark::State& ioState)
{
	CBFormat field;
	CAmbisonicProcessor rotation;
	CAmbisonicBinauralizer binauralizer;
	unsigned tail = 0;
	if (!field.Configure(1, true, kFrames) || !rotation.Configure(1, true, kFrames, 0) ||
		!binauralizer.Configure(1, true, kRate, kFrames, tail, SONARO_KEMAR_MEASUREMENTS))
	{
		ioState.SkipWithError("libspatialaudio refuses its configuration");
		return;
	}
	dsp::AudioBuffer samples = MakeField();
	dsp::AudioBuffer ears(2, kFrames);
	rotation.SetOrientation({0.3f, 0.0f, 0.0f});
	rotation.Refresh();
	for (auto _ : ioState)
	{
		for (unsigned block = 0; block < kBlocks; ++block)
		{
			for (unsigned channel = 0; channel < 4; ++channel)
			{
				field.InsertStream(samples.GetChannel(channel), channel, kFrames);
			}
			if (ioState.range(0) != 0)
			{
				rotation.Process(&field, kFrames);
			}
			binauralizer.Process(&field, ears.GetChannels());
			benchmark::ClobberMemory();
		}
	}
}
BENCHMARK(BM_BinauralizerOfLibspatialaudio)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);
#endif

} // namespace
