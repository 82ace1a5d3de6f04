// The time scaler beside others where they are installed: input samples a second of two channels, faster and slower. And
// the transform beneath it, beside KISS FFT.

#include "Sonaro/IAudioTimeScalerFactory.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/FFT.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#ifdef SONARO_HAS_KISSFFT_FLOAT
#include <kissfft/kiss_fftr.h>
#endif
#ifdef SONARO_HAS_RUBBERBAND
#include <rubberband/RubberBandStretcher.h>
#endif
#ifdef SONARO_HAS_SOUNDTOUCH
#include <SoundTouch.h>
#endif

namespace
{

using namespace SN;

constexpr unsigned kChannels = 2;
constexpr unsigned kRate = 48000;
constexpr unsigned kSeconds = 10;
constexpr unsigned kBlock = 1024;

using Stereo = std::array<std::vector<float>, kChannels>;

// Tones that glide and beat, under clicks and noise: no bin rests.
Stereo const& GetInput()
{
	static Stereo const sInput = []
	{
		Stereo input;
		std::uint32_t noise = 1;
		for (unsigned channel = 0; channel < kChannels; ++channel)
		{
			for (unsigned i = 0; i < kRate * kSeconds; ++i)
			{
				double const t = static_cast<double>(i) / kRate;
				noise = noise * 1664525u + 1013904223u;
				double const hiss = static_cast<double>(noise >> 8) / (1 << 24) - 0.5;
				double const tones = std::sin(2765.0 * t + 300.0 * t * t) + std::sin(1382.0 * t + channel) +
									 std::sin(8294.0 * t);
				input[channel].push_back(
					static_cast<float>(0.15 * tones + 0.05 * hiss + (i % 12000 == 0 ? 0.4 : 0.0)));
			}
		}
		return input;
	}();
	return sInput;
}

// Takes the whole input; returns how many outputs there were.
using Stretch = std::function<std::size_t(Stereo const& inInput)>;
using MakeStretch = std::function<Stretch(double inRatio)>;

Stretch MakeOwn(double inRatio)
{
	auto const scaler =
		GetAudioTimeScalerFactory()->CreateAudioTimeScaler(zorvmediatypes::RenderQuality::kHigh);
	scaler->Init(inRatio, FrameRate::FromSamplesPerSecond(kRate), kChannels, 1.0, 2048, 1);
	unsigned const most = scaler->GetMaxInputSampleCount(kBlock, 0.0);
	auto const input = std::make_shared<dsp::AudioBuffer>(kChannels, most);
	auto const output = std::make_shared<dsp::AudioBuffer>(kChannels, kBlock);
	return [scaler, input, output](Stereo const& inInput)
	{
		std::size_t outputs = 0;
		for (std::size_t cursor = 0;;)
		{
			unsigned const numInput = scaler->GetInputSampleCount(kBlock);
			if (cursor + numInput > inInput[0].size())
			{
				return outputs;
			}
			for (unsigned channel = 0; channel < kChannels; ++channel)
			{
				std::copy_n(inInput[channel].data() + cursor, numInput, input->GetChannel(channel));
			}
			outputs += scaler->Process(*input, *output, numInput, kBlock);
			cursor += numInput;
		}
	};
}

#ifdef SONARO_HAS_RUBBERBAND
MakeStretch MakeRubberBand(int inEngine)
{
	return [inEngine](double inRatio) -> Stretch
	{
		using RubberBand::RubberBandStretcher;
		auto const stretcher = std::make_shared<RubberBandStretcher>(kRate, kChannels,
			RubberBandStretcher::OptionProcessRealTime | RubberBandStretcher::OptionThreadingNever | inEngine,
			inRatio);
		stretcher->setMaxProcessSize(kBlock);
		return [stretcher](Stereo const& inInput)
		{
			std::size_t outputs = 0;
			std::array<std::vector<float>, kChannels> output;
			for (std::size_t cursor = 0; cursor + kBlock <= inInput[0].size(); cursor += kBlock)
			{
				float const* const in[] = {inInput[0].data() + cursor, inInput[1].data() + cursor};
				stretcher->process(in, kBlock, false);
				auto const ready = static_cast<std::size_t>(std::max(stretcher->available(), 0));
				for (auto& channel : output)
				{
					channel.resize(ready);
				}
				float* const out[] = {output[0].data(), output[1].data()};
				outputs += stretcher->retrieve(out, ready);
			}
			return outputs;
		};
	};
}
#endif

#ifdef SONARO_HAS_SOUNDTOUCH
Stretch MakeSoundTouch(double inRatio)
{
	auto const touch = std::make_shared<soundtouch::SoundTouch>();
	touch->setSampleRate(kRate);
	touch->setChannels(kChannels);
	touch->setTempo(1.0 / inRatio);
	return [touch](Stereo const& inInput)
	{
		std::size_t outputs = 0;
		std::vector<float> turns(kChannels * kBlock);
		std::vector<float> result(kChannels * 4 * kBlock);
		for (std::size_t cursor = 0; cursor + kBlock <= inInput[0].size(); cursor += kBlock)
		{
			for (unsigned i = 0; i < kBlock; ++i)
			{
				turns[2 * i] = inInput[0][cursor + i];
				turns[2 * i + 1] = inInput[1][cursor + i];
			}
			touch->putSamples(turns.data(), kBlock);
			while (unsigned const count = touch->receiveSamples(result.data(), 4 * kBlock))
			{
				outputs += count;
			}
		}
		return outputs;
	};
}
#endif

void Measure(benchmark::State& ioState, MakeStretch const& inMake, double inRatio)
{
	Stereo const& input = GetInput();
	Stretch const stretch = inMake(inRatio);
	for (auto _ : ioState)
	{
		benchmark::DoNotOptimize(stretch(input));
	}
	ioState.SetItemsProcessed(static_cast<std::int64_t>(ioState.iterations() * input[0].size()));
}

void RegisterStretch(std::string const& inName, MakeStretch const& inMake)
{
	for (double const speed : {1.25, 0.8})
	{
		std::string const name = "BM_TimeScaler/" + inName + (speed > 1.0 ? "/1.25" : "/0.8");
		benchmark::RegisterBenchmark(name.c_str(),
			[inMake, speed](benchmark::State& ioState) { Measure(ioState, inMake, 1.0 / speed); })
			->Unit(benchmark::kMillisecond);
	}
}

// Before main, as the other benchmarks are entered.
[[maybe_unused]] bool const sTimeScalersAreRegistered = []
{
	RegisterStretch("own", &MakeOwn);
#ifdef SONARO_HAS_RUBBERBAND
	RegisterStretch("rubberband/R2", MakeRubberBand(RubberBand::RubberBandStretcher::OptionEngineFaster));
	RegisterStretch("rubberband/R3", MakeRubberBand(RubberBand::RubberBandStretcher::OptionEngineFiner));
#endif
#ifdef SONARO_HAS_SOUNDTOUCH
	RegisterStretch("soundtouch", &MakeSoundTouch);
#endif
	return true;
}();

// Forth and back.
void BM_FFT(benchmark::State& ioState)
{
	dsp::FFT fft(static_cast<unsigned>(ioState.range(0)));
	std::vector<float> data(GetInput()[0].begin(), GetInput()[0].begin() + ioState.range(0));
	for (auto _ : ioState)
	{
		fft.Forward(data.data());
		fft.Inverse(data.data());
		benchmark::DoNotOptimize(data.data());
	}
}
BENCHMARK(BM_FFT)->RangeMultiplier(4)->Range(128, 8192);

#ifdef SONARO_HAS_KISSFFT_FLOAT
void BM_KissFFT(benchmark::State& ioState)
{
	int const size = static_cast<int>(ioState.range(0));
	std::unique_ptr<kiss_fftr_state, decltype(&kiss_fft_free)> const forward(
		kiss_fftr_alloc(size, 0, nullptr, nullptr), &kiss_fft_free);
	std::unique_ptr<kiss_fftr_state, decltype(&kiss_fft_free)> const inverse(
		kiss_fftr_alloc(size, 1, nullptr, nullptr), &kiss_fft_free);
	std::vector<float> data(GetInput()[0].begin(), GetInput()[0].begin() + size);
	std::vector<kiss_fft_cpx> spectrum(data.size() / 2 + 1);
	for (auto _ : ioState)
	{
		kiss_fftr(forward.get(), data.data(), spectrum.data());
		kiss_fftri(inverse.get(), spectrum.data(), data.data());
		for (float& sample : data)
		{
			sample /= static_cast<float>(size);
		}
		benchmark::DoNotOptimize(data.data());
	}
}
BENCHMARK(BM_KissFFT)->RangeMultiplier(4)->Range(128, 8192);
#endif

} // namespace
