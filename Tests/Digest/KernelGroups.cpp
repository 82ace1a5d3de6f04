#include "Digest.h"

#include "zorvaccelerate/ChannelMixing.h"
#include "zorvaccelerate/FiniteSamples.h"
#include "zorvaccelerate/Fourier.h"
#include "zorvaccelerate/Metering.h"
#include "zorvaccelerate/PhaseVocoder.h"
#include "zorvaccelerate/Resampling.h"
#include "zorvaccelerate/VectorArithmetic.h"

#include <algorithm>
#include <limits>

namespace SonaroDigest
{

namespace
{

using namespace zorvaccelerate::utility;

// Lengths below, at and beyond those of vectors.
constexpr unsigned kCounts[] = {1, 3, 7, 16, 33, 67, 255, 1000};

// Noise with some of the numbers that arithmetic treats apart.
std::vector<float> MakeHardNoise(Random& ioRandom, unsigned inCount)
{
	constexpr float kHard[] = {0.0f, -0.0f, 1e-42f, -1e-39f, 3e38f, std::numeric_limits<float>::infinity(),
		std::numeric_limits<float>::quiet_NaN(), 1.0f};
	std::vector<float> noise = ioRandom.MakeNoise(inCount);
	for (float& sample : noise)
	{
		sample = ioRandom.Below(8) == 0 ? kHard[ioRandom.Below(8)] : sample;
	}
	return noise;
}

void RunVectors(Digest& ioDigest)
{
	Random random(1);
	for (unsigned const count : kCounts)
	{
		std::vector<float> const a = MakeHardNoise(random, count + 8);
		std::vector<float> const b = MakeHardNoise(random, count);
		std::vector<float> const taps = random.MakeNoise(9);
		std::vector<float> out(count);
		auto const add = [&] { ioDigest.AddAll(out); };
		Add(count, a.data(), b.data(), out.data());
		add();
		MulConstant(count, a.data(), 0.7f, out.data());
		add();
		MulTwoConstants(count, a.data(), 0.7f, -1.3e-3f, out.data());
		add();
		MulRamp(count, a.data(), {0.3f, -1.7f, 4801.0f}, 4700, out.data());
		add();
		Convolve(count, a.data(), 9, taps.data(), out.data());
		add();
		Reverse_InPlace(count, out.data());
		add();
		std::vector<std::int32_t> integers(count);
		std::generate(integers.begin(), integers.end(),
			[&random] { return static_cast<std::int32_t>(random.GetBits() >> 32); });
		ConvertInt32ToFloat32_InPlace(count, integers.data());
		for (std::int32_t const bits : integers)
		{
			ioDigest.Add(std::bit_cast<float>(bits));
		}
		ioDigest.Add(FindPeak(count, a.data()));
		ioDigest.Add(std::int64_t{AreFinite(count, a.data())});
		ioDigest.Add(std::int64_t{CopyAndTestFinite(count, b.data(), out.data())});
		ioDigest.Add(CopyPlausible(count, a.data(), out.data()));
		add();
	}
}

void RunChannels(Digest& ioDigest)
{
	Random random(2);
	for (unsigned const count : kCounts)
	{
		std::vector<std::vector<float>> channels(6);
		float const* inputs[6];
		for (unsigned i = 0; i < 6; ++i)
		{
			channels[i] = MakeHardNoise(random, count);
			inputs[i] = channels[i].data();
		}
		std::vector<float> left(count);
		std::vector<float> right(count);
		float* const outputs[] = {left.data(), right.data()};
		for (unsigned fold = 0; fold < kNumChannelFolds; ++fold)
		{
			FoldChannels(static_cast<ChannelFold>(fold), count, inputs, {0.7f, 0.31f, 0.123f, 0.9f}, outputs);
			ioDigest.AddAll(left);
			ioDigest.AddAll(right);
		}
		float const gains[] = {0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f};
		WeightedSum(count, 6, inputs, gains, left.data());
		MulConstantAdd(count, inputs[2], 0.77f, left.data());
		ioDigest.AddAll(left);
		FilterFeed feed{inputs[0], inputs[1], 0.5f, 0.25f, 0.1f, -0.2f};
		FeedFilter(count, feed, 0.33f, right.data());
		ioDigest.AddAll(right);
		ioDigest.Add(feed.mX1);
		ioDigest.Add(feed.mX2);
	}
}

void RunFourier(Digest& ioDigest)
{
	Random random(3);
	for (unsigned size = kSmallestFourierSize; size <= 16384; size *= 2)
	{
		std::vector<float> table(CountFourierTable(size));
		std::vector<float> scratch(size);
		std::vector<float> data = random.MakeNoise(size);
		FillFourierTable(size, table.data());
		ioDigest.AddAll(table);
		FourierPlan const plan{size, table.data(), scratch.data()};
		TransformForward(plan, data.data());
		ioDigest.AddAll(data);
		TransformInverse(plan, data.data());
		ioDigest.AddAll(data);
	}
}

void RunMetering(Digest& ioDigest)
{
	Random random(4);
	LaneFilter const filter{{0.02f, 0.3f}, {0.97f, 0.6f}, 0.4f, 0.8f};
	LaneStates states{};
	for (unsigned const count : kCounts)
	{
		std::vector<std::vector<float>> signals(kFilterLanes);
		float const* inputs[kFilterLanes];
		for (unsigned i = 0; i < kFilterLanes; ++i)
		{
			signals[i] = random.MakeNoise(count);
			inputs[i] = signals[i].data();
		}
		std::vector<float> filtered(std::size_t{count} * kFilterLanes);
		FilterLanes(count, kFilterLanes, inputs, filter, states, filtered.data());
		ioDigest.AddAll(filtered);
		ioDigest.AddAll(std::span<float const>(states.mSquares));
		ioDigest.AddAll(std::span<float const>(states.mFilteredSquares));
	}
}

void RunPhaseVocoder(Digest& ioDigest)
{
	Random random(5);
	for (unsigned size = 64; size <= 4096; size *= 2)
	{
		BinGrid const grid{size, size / 2 + 1, 48000.0f / static_cast<float>(size)};
		std::vector<float> phases(grid.mBins);
		std::vector<float> sums(grid.mBins);
		std::vector<float> magnitudes(grid.mBins);
		std::vector<float> frequencies(grid.mBins);
		std::vector<float> spectrum(size + 2);
		for (int frame = 0; frame < 3; ++frame)
		{
			std::vector<float> const input = random.MakeNoise(size + 2);
			AnalyseBins(grid, input.data(), 7.1f, phases.data(), magnitudes.data(), frequencies.data());
			SynthesiseBins(grid, magnitudes.data(), frequencies.data(), 187.5f, sums.data(), spectrum.data());
			for (auto const* const values : {&phases, &magnitudes, &frequencies, &sums, &spectrum})
			{
				ioDigest.AddAll(*values);
			}
		}
		std::vector<float> const samples = random.MakeNoise(size);
		MulAdd(size, samples.data(), spectrum.data(), spectrum.data() + 0);
		RunningMeans means{0.0f, 0.0f, 0.0f, 300.0f};
		MeansRun const run{&means, samples.data(), size};
		UpdateMeans(1, &run);
		ioDigest.Add(means.mMean);
		ioDigest.Add(means.mMeanSquare);
	}
}

void RunFilterKernels(Digest& ioDigest)
{
	Random random(6);
	for (unsigned const taps : {32u, 64u, 96u, 160u})
	{
		std::vector<float> const samples = random.MakeNoise(1000);
		std::vector<float> const table = random.MakeNoise(std::size_t{8} * 64 * taps);
		std::vector<FilterPlace> places;
		for (unsigned output = 0; output < 50; ++output)
		{
			places.push_back({4 * taps * random.Below(32), random.Below(500), output,
				static_cast<float>(random.Between(0.0, 1.0))});
		}
		std::vector<float> out(places.size());
		FilterPlaces(50, places.data(), taps, table.data(), samples.data(), out.data());
		ioDigest.AddAll(out);
		FilterBetweenRows(50, places.data(), taps, table.data(), samples.data(), out.data());
		ioDigest.AddAll(out);
		float const* rows[kFilterOutputs];
		double const* wideRows[kFilterOutputs];
		float const* starts[kFilterOutputs];
		std::vector<std::vector<double>> wide(kFilterOutputs, std::vector<double>(taps));
		for (unsigned i = 0; i < kFilterOutputs; ++i)
		{
			rows[i] = table.data() + std::size_t{i} * taps;
			InterpolateCoefficients(taps, rows[i], rows[i] + taps, 0.37f, wide[i].data());
			ioDigest.AddAll(std::span<double const>(wide[i]));
			wideRows[i] = wide[i].data();
			starts[i] = samples.data() + 3 * i;
		}
		FilterEight(taps - 3, rows, starts, out.data());
		FilterEight(taps - 1, wideRows, starts, out.data() + kFilterOutputs);
		ioDigest.AddAll(out);
	}
}

void RunInterpolations(Digest& ioDigest)
{
	Random random(7);
	std::vector<float> const samples = random.MakeNoise(2000);
	std::vector<float> const weights = random.MakeNoise(4 * 257);
	for (unsigned const count : kCounts)
	{
		std::vector<double> positions(count);
		std::generate(positions.begin(), positions.end(), [&random] { return random.Between(1.0, 1900.0); });
		std::vector<float> out(count);
		InterpolateLinear(count, positions.data(), samples.data(), out.data());
		ioDigest.AddAll(out);
		InterpolateCubic(count, positions.data(), weights.data(), 256, samples.data(), out.data());
		ioDigest.AddAll(out);
	}
}

constexpr Group kGroups[] = {
	{"kernels: vectors", RunVectors},
	{"kernels: channels", RunChannels},
	{"kernels: Fourier", RunFourier},
	{"kernels: metering", RunMetering},
	{"kernels: phase vocoder", RunPhaseVocoder},
	{"kernels: filters", RunFilterKernels},
	{"kernels: interpolation", RunInterpolations},
};

} // namespace

std::span<Group const> GetKernelGroups()
{
	return kGroups;
}

} // namespace SonaroDigest
