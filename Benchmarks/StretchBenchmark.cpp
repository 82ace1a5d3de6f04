// The speed of stretchers, stereo, in seconds of output for a second of time.

#include "StretchPeers.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <random>

namespace
{

using namespace StretchPeers;

// Ten seconds with tones, noise and a beat, so that there is something to look for.
Sound MakeMusic()
{
	std::mt19937 random(7);
	std::uniform_real_distribution<float> noise(-1.0f, 1.0f);
	Sound sound(2, std::vector<float>(static_cast<std::size_t>(10.0 * kSampleRate)));
	for (std::size_t i = 0; i < sound[0].size(); ++i)
	{
		double const time = static_cast<double>(i) / kSampleRate;
		double const beat = std::exp(-30.0 * std::fmod(time, 0.5));
		double const tones = std::sin(1640.0 * time) + std::sin(2070.0 * time) + std::sin(2460.0 * time);
		for (unsigned channel = 0; channel < 2; ++channel)
		{
			double const shared = 0.1 * tones * (channel == 0 ? 1.0 : 0.6);
			sound[channel][i] = static_cast<float>(shared + 0.5 * beat * static_cast<double>(noise(random)));
		}
	}
	return sound;
}

void Run(benchmark::State& ioState, Stretcher const& inStretcher, double inRatio)
{
	static Sound const sMusic = MakeMusic();
	double seconds = 0.0;
	for (auto _ : ioState)
	{
		Sound const output = inStretcher.mStretch(sMusic, inRatio);
		benchmark::DoNotOptimize(output[0].data());
		seconds += static_cast<double>(output[0].size()) / kSampleRate;
	}
	ioState.counters["times_real_time"] = benchmark::Counter(seconds, benchmark::Counter::kIsRate);
}

[[maybe_unused]] bool const sAreRegistered = []
{
	for (Stretcher const& stretcher : GetStretchers())
	{
		for (double const ratio : {1.25, 0.8})
		{
			benchmark::RegisterBenchmark(("Stretch/" + stretcher.mName + "/" + std::to_string(ratio)).c_str(),
				[&stretcher, ratio](benchmark::State& ioState) { Run(ioState, stretcher, ratio); })
				->Unit(benchmark::kMillisecond);
		}
	}
	return true;
}();

} // namespace
