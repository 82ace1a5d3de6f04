#include "SonaroHost/Media/RateConverter.h"

#include "SonaroHost/Base/HostError.h"
#include "Support/Common.h"
#include "Support/SameBits.h"
#include "Support/Trials.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <random>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace SonaroHost::RateConverterTest
{
namespace
{

__extension__ using Wide = __int128;

// A full-scale sine of inCycles periods in a frame, exact at any frame.
double GetSine(Ratio const& inCycles, Wide inNumerator, Wide inDenominator, double inQuarters = 0.0)
{
	Wide const whole = inDenominator * inCycles.GetDenominator();
	Wide const phase = inNumerator * inCycles.GetNumerator() % whole;
	return std::sin(2.0 * std::numbers::pi *
					(static_cast<double>(phase) / static_cast<double>(whole) + inQuarters / 4.0));
}

// Something else in each frame.
float GetNoise(std::int64_t inFrame)
{
	std::uint64_t bits = static_cast<std::uint64_t>(inFrame) * 0x9e3779b97f4a7c15ull;
	bits ^= bits >> 29;
	bits *= 0xbf58476d1ce4e5b9ull;
	return std::ldexp(static_cast<float>(static_cast<std::int32_t>(bits >> 32)), -31);
}

template <class Source>
std::vector<float> Convert(
	RateConverter const& inConverter, std::int64_t inFirst, unsigned inCount, Source const& inSource)
{
	auto const [first, end] = inConverter.GetInput(inFirst, inCount);
	std::vector<float> input;
	for (std::int64_t frame = first; frame < end; ++frame)
	{
		input.push_back(inSource(frame));
	}
	std::vector<float> output(inCount);
	RateConverter::Channel const channel{input.data(), output.data()};
	inConverter.Convert(inFirst, inCount, {&channel, 1});
	return output;
}

struct Case
{
	char const* mName;
	// Hertz from and to, and the offset of the first output.
	Ratio mFrom;
	Ratio mTo;
	Ratio mOffset = Ratio();
	RateQuality mQuality = RateQuality::kFull;

	RateConverter Make() const { return {mFrom / mTo, {0, mOffset}, mQuality}; }
};

Case const kCases[] = {
	{"44100 to 48000", Ratio(44100), Ratio(48000)},
	{"48000 to 44100", Ratio(48000), Ratio(44100)},
	{"96000 to 48000", Ratio(96000), Ratio(48000)},
	{"a third of a frame", Ratio(48000), Ratio(44100), {1, 3}},
	{"an offset that no table has", Ratio(44100), Ratio(48000), {314159, 1000003}},
	{"pulled down", Ratio(48000), {48000000, 1001}},
	{"a semitone up", Ratio::FromExactDouble(1.0594630943592953), Ratio(1)},
	{"a semitone down, backwards", Ratio::FromExactDouble(-1.0 / 1.0594630943592953), Ratio(1), {1, 2}},
	{"a hundredth", Ratio(1), Ratio(100)},
	{"close to a hundredth", Ratio(1000), Ratio(99991)},
	{"a hundred", Ratio(100), Ratio(1)},
	{"close to a hundred, backwards", Ratio(-99991), Ratio(1000)},
	{"draft, 44100 to 48000", Ratio(44100), Ratio(48000), {}, RateQuality::kDraft},
	{"draft, backwards by no table", Ratio(-48000), Ratio(44100), {1, 1000003}, RateQuality::kDraft},
};

// The error against the sine at the exact positions, in dB below it: noise, images, a wrong gain or phase.
double MeasureTone(Case const& inCase, Ratio const& inCycles, std::int64_t inFirst, unsigned inCount)
{
	std::vector<float> const output = Convert(inCase.Make(), inFirst, inCount,
		[&](std::int64_t inFrame) { return static_cast<float>(GetSine(inCycles, inFrame, 1)); });
	Ratio const step = inCase.mFrom / inCase.mTo;
	double error = 0.0;
	double power = 0.0;
	for (unsigned i = 0; i < inCount; ++i)
	{
		Wide const position = Wide{step.GetNumerator()} * (inFirst + i) * inCase.mOffset.GetDenominator() +
							  Wide{inCase.mOffset.GetNumerator()} * step.GetDenominator();
		double const exact =
			GetSine(inCycles, position, Wide{step.GetDenominator()} * inCase.mOffset.GetDenominator());
		double const off = static_cast<double>(output[i]) - exact;
		error += off * off;
		power += exact * exact;
	}
	return 10.0 * std::log10(power / error);
}

TEST(RateConverter, TonesStandAtTheirExactPositions)
{
	for (Case const& test : kCases)
	{
		bool const isFull = test.mQuality == RateQuality::kFull;
		// Half the lower rate, in cycles by a frame.
		Ratio const step = test.mFrom / test.mTo;
		Ratio const band = Ratio(1, 2) / std::max({Ratio(1), step, -step});
		for (Ratio const part : {Ratio(1, 24), Ratio(5, 12), isFull ? Ratio(9, 10) : Ratio(79, 100)})
		{
			SCOPED_TRACE(test.mName);
			EXPECT_GT(MeasureTone(test, part * band, -700, 1500), isFull ? 140.0 : 100.0) << part.ToDouble();
		}
	}
}

TEST(RateConverter, BandIsFlatUpToTwentyKilohertz)
{
	for (Case const& test : {kCases[0], kCases[1]})
	{
		SCOPED_TRACE(test.mName);
		for (int const hertz : {20, 1000, 10000, 18000, 19500, 20000})
		{
			// At a gain g, the error is 1 - g of the tone.
			EXPECT_GT(MeasureTone(test, Ratio(hertz) / test.mFrom, 0, 2400), 20.0 * std::log10(1.0 / 0.00115))
				<< hertz;
		}
	}
}

// What is beyond the band of either rate has no place in the output, and what is within it there has no images.
TEST(RateConverter, ImagesAndAliasesAreStopped)
{
	for (Case const& test : kCases)
	{
		bool const isFull = test.mQuality == RateQuality::kFull;
		Ratio const step = test.mFrom / test.mTo;
		Ratio const rise = std::max(step, -step);
		for (Ratio const part : {Ratio(96, 100), Ratio(100, 100), Ratio(104, 100), Ratio(150, 100)})
		{
			Ratio const cycles = part * Ratio(1, 2) / std::max(Ratio(1), rise);
			if (cycles > Ratio(1, 2))
			{
				continue;
			}
			SCOPED_TRACE(test.mName);
			std::vector<float> const output = Convert(test.Make(), 0, 1500,
				[&](std::int64_t inFrame) { return static_cast<float>(GetSine(cycles, inFrame, 1)); });
			// Without the part of it that is the tone itself, by least squares.
			double sums[5] = {};
			std::vector<std::pair<double, double>> waves;
			for (unsigned i = 0; i < output.size(); ++i)
			{
				Ratio const position = test.mOffset + step * Ratio(i);
				double const s = GetSine(cycles, position.GetNumerator(), position.GetDenominator());
				double const c = GetSine(cycles, position.GetNumerator(), position.GetDenominator(), 1.0);
				waves.emplace_back(s, c);
				double const y = static_cast<double>(output[i]);
				sums[0] += s * s;
				sums[1] += s * c;
				sums[2] += c * c;
				sums[3] += s * y;
				sums[4] += c * y;
			}
			bool const isBeyond = part >= Ratio(1);
			double const area = sums[0] * sums[2] - sums[1] * sums[1];
			double const a = isBeyond ? 0.0 : (sums[3] * sums[2] - sums[4] * sums[1]) / area;
			double const b = isBeyond ? 0.0 : (sums[4] * sums[0] - sums[3] * sums[1]) / area;
			double rest = 0.0;
			for (unsigned i = 0; i < output.size(); ++i)
			{
				double const off = static_cast<double>(output[i]) - a * waves[i].first - b * waves[i].second;
				rest += off * off;
			}
			double const level = 10.0 * std::log10(2.0 * rest / static_cast<double>(output.size()) + 1e-30);
			EXPECT_LT(level, isFull ? -140.0 : -100.0) << part.ToDouble();
		}
	}
}

TEST(RateConverter, AnyCutInAnyOrderEqualsTheWhole)
{
	std::mt19937 random(61);
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(test.mName);
		constexpr unsigned kOutputs = 400;
		RateConverter const converter = test.Make();
		std::vector<float> const whole = Convert(converter, -200, kOutputs, &GetNoise);
		for (unsigned trial = 0; trial < SN::Testing::GetNumTrials(20); ++trial)
		{
			auto const first = static_cast<unsigned>(random() % kOutputs);
			auto const count = static_cast<unsigned>(1 + random() % (kOutputs - first));
			std::vector<float> const part =
				Convert(converter, static_cast<std::int64_t>(first) - 200, count, &GetNoise);
			ASSERT_TRUE(
				SameBits(part, std::vector<float>(whole.begin() + first, whole.begin() + first + count)))
				<< first << " " << count;
		}
	}
}

// Both read the same positions.
TEST(RateConverter, BackwardsGivesTheSameBitsTurnedRound)
{
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(test.mName);
		Ratio const step = test.mFrom / test.mTo;
		constexpr unsigned kOutputs = 200;
		std::vector<float> forward = Convert(test.Make(), 0, kOutputs, &GetNoise);
		RateConverter const turned(-step, {0, test.mOffset + step * Ratio(kOutputs - 1)}, test.mQuality);
		std::reverse(forward.begin(), forward.end());
		EXPECT_TRUE(SameBits(Convert(turned, 0, kOutputs, &GetNoise), forward));
	}
}

// After so many outputs positions begin again at a whole frame, without having moved.
TEST(RateConverter, PositionsAreExactFarOut)
{
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(test.mName);
		Ratio const step = test.mFrom / test.mTo;
		std::int64_t const rounds = (std::int64_t{1} << 33) / step.GetDenominator() + 1;
		std::int64_t const first = rounds * step.GetDenominator();
		std::int64_t const shift = rounds * step.GetNumerator();
		EXPECT_TRUE(SameBits(Convert(test.Make(), first, 100, &GetNoise),
			Convert(test.Make(), 0, 100, [&](std::int64_t inFrame) { return GetNoise(inFrame + shift); })));
	}
}

TEST(RateConverter, SpeedsOfAnyRatioKeepTheirPromise)
{
	std::mt19937 random(62);
	for (unsigned trial = 0; trial < SN::Testing::GetNumTrials(40); ++trial)
	{
		auto const draw = [&] { return static_cast<std::int64_t>(1 + random() % 100); };
		Ratio step(draw(), draw());
		step = random() % 2 == 0 ? step : -step;
		Case const test{"", step, Ratio(1), {static_cast<std::int64_t>(random() % 100), 100}};
		SCOPED_TRACE(std::to_string(step.ToDouble()));
		Ratio const band = Ratio(1, 2) / std::max({Ratio(1), step, -step});
		EXPECT_GT(MeasureTone(test, Ratio(2, 3) * band, 1000000, 300), 139.0);
	}
}

TEST(RateConverter, WhatIsNotANumberStaysWithinTheFilter)
{
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(test.mName);
		RateConverter const converter = test.Make();
		constexpr unsigned kOutputs = 300;
		std::int64_t const bad = converter.GetInput(kOutputs / 2, 1).mFirst + converter.GetTaps() / 3;
		auto const clean = Convert(converter, 0, kOutputs, &GetNoise);
		auto const spoilt = Convert(converter, 0, kOutputs,
			[&](std::int64_t inFrame)
			{ return inFrame == bad ? std::numeric_limits<float>::quiet_NaN() : GetNoise(inFrame); });
		for (unsigned i = 0; i < kOutputs; ++i)
		{
			auto const [first, end] = converter.GetInput(i, 1);
			bool const isCovered = first <= bad && bad < end;
			ASSERT_EQ(end - first, converter.GetTaps());
			ASSERT_TRUE(isCovered ? std::isnan(spoilt[i]) : spoilt[i] == clean[i]) << i;
		}
	}
}

TEST(RateConverter, CountsTheOutputsThatFitIntoItsInput)
{
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(test.mName);
		RateConverter const converter = test.Make();
		for (std::int64_t const spare : {0, 1, 2, 7, 100, 1000})
		{
			std::int64_t const frames = converter.GetTaps() + spare;
			std::int64_t const outputs = converter.CountOutputs(frames);
			ASSERT_GE(outputs, 1);
			for (std::int64_t first = -170; first < 170; ++first)
			{
				auto const [begin, end] = converter.GetInput(first, outputs);
				ASSERT_LE(end - begin, frames) << first;
			}
		}
	}
}

TEST(RateConverter, RefusesStepsThatAreNone)
{
	for (Ratio const step : {Ratio(), Ratio(1001), Ratio(-1001)})
	{
		EXPECT_THROW(RateConverter(step, {}), HostError) << step.ToDouble();
	}
}

} // namespace
} // namespace SonaroHost::RateConverterTest
