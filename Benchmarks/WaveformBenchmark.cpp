// Columns of waveforms: the samples alone, and a graph's through the generator into a buffer.

#include "Sonaro/AudioWaveformQueue.h"
#include "Sonaro/IAudioGeneratorPrivate.h"
#include "SonaroHost/Engine/TimeTransforms.h"
#include "SonaroHost/Waveform/PeakColumn.h"
#include "SonaroHost/Waveform/PeakWaveformGenerator.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvmediatypes/AudioChannelLayout.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

namespace
{

using namespace SN;
using zorvcore::classref::MakeObject;

constexpr unsigned kBlock = 8192;

std::vector<float> MakeSamples()
{
	std::vector<float> samples(kBlock);
	for (std::size_t i = 0; i < samples.size(); ++i)
	{
		samples[i] = std::sin(0.1f * static_cast<float>(i));
	}
	return samples;
}

// Stereo of the same block again and again, which costs no more than a copy.
class LoopGenerator final : public Implements<LoopGenerator, IAudioGenerator, IAudioGeneratorPrivate>
{
public:
	InterfaceRef<IAudioGenerator> Clone() override { return InterfaceRef<IAudioGenerator>::FromThis(this); }
	bool HasHistory() override { return false; }
	TickTime GetDelay() override { return {}; }
	void Preroll(TickTime const&, bool) override {}
	void FillInitialDelay(TickTime const&, TickTime const&, bool, bool) override {}
	void AccumulatePrefetchRequests(PrefetchRange const&, PrefetchType, PrefetchRequestAccumulator&) override
	{
	}
	void GetAudioData(TickTime const&, dsp::AudioBuffer& inBuffer, bool) override
	{
		for (unsigned channel = 0; channel < 2; ++channel)
		{
			std::copy_n(mSamples.data(), inBuffer.GetUseSize(), inBuffer.GetChannel(channel));
			inBuffer.NoteChannelWrite(channel, inBuffer.GetUseSize());
		}
	}
	void Reset() override {}
	void InitializeAudioFilters() override {}
	void ShutdownAudioFilters() override {}

	unsigned GetNumChannels() override { return 2; }
	unsigned GetNumOutputChannels() override { return 2; }
	AudioChannelLayout GetAudioChannelLayout() override
	{
		return zorvmediatypes::CreateStereoChannelLayout();
	}
	FrameRate GetGeneratorFrameRate() override { return FrameRate::FromSamplesPerSecond(48000.0); }

private:
	std::vector<float> mSamples = MakeSamples();
};

// By samples in a column.
void AddSamples(benchmark::State& ioState)
{
	std::vector<float> const samples = MakeSamples();
	auto const length = static_cast<unsigned>(ioState.range(0));
	for (auto _ : ioState)
	{
		for (unsigned first = 0; first < kBlock; first += length)
		{
			SonaroHost::PeakColumn column;
			column.Add(samples.data() + first, length);
			benchmark::DoNotOptimize(column);
		}
	}
	ioState.SetItemsProcessed(static_cast<std::int64_t>(ioState.iterations()) * kBlock);
}
BENCHMARK(AddSamples)->Arg(64)->Arg(256)->Arg(8192);

// A minute of stereo; by samples in a column, and by speed in percent, 0 for no transform.
void Generate(benchmark::State& ioState)
{
	auto const seconds = TickTime::FromSeconds(60.0);
	auto const generator = MakeObject<SonaroHost::PeakWaveformGenerator>(
		MakeObject<LoopGenerator>(), kTimeZero, seconds, kBlock);
	InterfaceRef<VX::ITimeTransform> transform;
	if (ioState.range(1) != 0)
	{
		transform = MakeObject<SonaroHost::SpeedTimeTransform>(static_cast<double>(ioState.range(1)) / 100.0);
	}
	for (auto _ : ioState)
	{
		auto const buffer = AudioWaveformQueue::CreateAudioWaveformBuffer();
		generator->GenerateWaveform(kTimeZero, seconds, transform,
			static_cast<unsigned long long>(ioState.range(0)), buffer, false, nullptr, false);
		benchmark::DoNotOptimize(buffer->GetChannels().data());
	}
	ioState.SetItemsProcessed(static_cast<std::int64_t>(ioState.iterations()) * 60 * 48000 * 2);
}
BENCHMARK(Generate)
	->Args({256, 0})
	->Args({8192, 0})
	->Args({256, 100})
	->Args({256, 50})
	->Unit(benchmark::kMillisecond);

} // namespace
