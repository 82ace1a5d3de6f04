// Sound at a speed that changes, beside one that stays and is as odd.
#include "Media/RampConverter.h"
#include "SonaroHost/Media/RateConverter.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

namespace
{

using namespace SonaroHost;

constexpr unsigned kBlockFrames = 512;
constexpr int kSecondsOfRamp = 10;
constexpr std::int64_t kRate = 48000;

// Stereo, block by block from the start to the end of the ramp, over and over.
void Measure(benchmark::State& ioState, SampleConverter const& inConverter)
{
	std::vector<float> input(static_cast<std::size_t>(inConverter.CountInput(kBlockFrames)));
	for (std::size_t i = 0; i < input.size(); ++i)
	{
		input[i] = static_cast<float>(std::sin(2.0 * std::numbers::pi * 0.01 * static_cast<double>(i)));
	}
	std::array<std::vector<float>, 2> outputs{
		std::vector<float>(kBlockFrames), std::vector<float>(kBlockFrames)};
	std::array<SampleConverter::Channel, 2> const channels{
		{{input.data(), outputs[0].data()}, {input.data(), outputs[1].data()}}};
	std::int64_t output = 0;
	for (auto _ : ioState)
	{
		inConverter.Convert(output, kBlockFrames, channels);
		benchmark::DoNotOptimize(outputs);
		output = (output + kBlockFrames) % (kSecondsOfRamp * kRate);
	}
	ioState.SetItemsProcessed(ioState.iterations() * kBlockFrames);
}

// A speed in parts of 1000003, which no table of phases holds.
void BM_OddSpeed(benchmark::State& ioState)
{
	Measure(ioState, RateConverter(Ratio(ioState.range(0) * 10'000 + 7, 1'000'003), {}));
}
BENCHMARK(BM_OddSpeed)->Arg(70)->Arg(150);

// Between two speeds, in hundredths.
void BM_Ramp(benchmark::State& ioState)
{
	SpeedCurve const curve({{Ratio(), Ratio(ioState.range(0), 100), Interpolation::kSmooth},
		{Ratio(kSecondsOfRamp), Ratio(ioState.range(1), 100)}});
	Measure(ioState, RampConverter(curve, {Ratio(kRate), Ratio(kRate), 0, 0, Ratio()}, RateQuality::kFull));
}
BENCHMARK(BM_Ramp)->Args({50, 90})->Args({100, 200});

// The filters of a new ramp, up to a speed in hundredths.
void BM_RampInit(benchmark::State& ioState)
{
	SpeedCurve const curve({{Ratio(), Ratio(1)}, {Ratio(kSecondsOfRamp), Ratio(ioState.range(0), 100)}});
	for (auto _ : ioState)
	{
		RampConverter const converter(curve, {Ratio(kRate), Ratio(kRate), 0, 0, Ratio()}, RateQuality::kFull);
		benchmark::DoNotOptimize(converter.GetTaps());
	}
}
BENCHMARK(BM_RampInit)->Arg(90)->Arg(200)->Unit(benchmark::kMillisecond);

} // namespace
