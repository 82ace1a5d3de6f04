#include "SonaroHost/Base/SpeedCurve.h"

#include "Base/CurvePositions.h"
#include "Media/RampConverter.h"
#include "SonaroHost/Base/CurveTimes.h"
#include "SonaroHost/Base/HostError.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <random>
#include <vector>

namespace SonaroHost::SpeedCurveTest
{
namespace
{

using enum Interpolation;

SpeedCurve const kUpAndBack({{Ratio(1), Ratio(1, 2), kLinear}, {Ratio(3), Ratio(2), kHold},
	{Ratio(4), Ratio(1), kSmooth}, {Ratio(6), Ratio(-1), kLinear}, {Ratio(7), Ratio(-1), kHold},
	{Ratio(8), Ratio(), kHold}, {Ratio(9), Ratio(3), kSmooth}, {Ratio(10), Ratio(7, 3), kHold}});

SpeedCurve MakeRandomCurve(std::mt19937& ioRandom)
{
	std::uniform_int_distribution<int> number(1, 96000);
	std::vector<SpeedCurve::Key> keys;
	Ratio time(number(ioRandom) - 48000, 48000);
	for (int i = 0; i < 6; ++i)
	{
		keys.push_back(
			{time, Ratio(number(ioRandom) - 40000, 20000), static_cast<Interpolation>(number(ioRandom) % 3)});
		time += Ratio(number(ioRandom), i == 2 ? 10'000'000 : 24000);
	}
	return SpeedCurve(keys);
}

// By Simpson's rule, which is exact for the curve's polynomials, of each stretch between keys.
double IntegrateSpeeds(SpeedCurve const& inCurve, Ratio const& inFrom, Ratio const& inTo)
{
	std::vector<Ratio> times{inFrom, inTo};
	for (SpeedCurve::Key const& key : inCurve.GetKeys())
	{
		if (key.mTime > inFrom && key.mTime < inTo)
		{
			times.insert(times.end() - 1, key.mTime);
		}
	}
	double sum = 0.0;
	for (std::size_t i = 1; i < times.size(); ++i)
	{
		double const length = (times[i] - times[i - 1]).ToDouble();
		// Just before its end a hold has not jumped yet.
		Ratio const middle = (times[i] + times[i - 1]) * Ratio(1, 2);
		Ratio const last = times[i - 1] + (times[i] - times[i - 1]) * Ratio(999'999'999, 1'000'000'000);
		sum += length / 6.0 *
			   (inCurve.GetSpeed(times[i - 1]).ToDouble() + 4.0 * inCurve.GetSpeed(middle).ToDouble() +
				   inCurve.GetSpeed(last).ToDouble());
	}
	return sum;
}

TEST(SpeedCurve, PositionsAreTheExactIntegral)
{
	struct Case
	{
		Ratio mTime;
		Ratio mSpeed;
		char const* mWay;
	};
	// The ways up to each second are 1/2, 5/2 more up to 3, 2 up to 4, 0 up to 6, -1 up to 7 and to 8, and 0 up to 9.
	Case const kCases[] = {{Ratio(-2), {1, 2}, "-1"}, {Ratio(2), {5, 4}, "11/8"}, {Ratio(3), Ratio(2), "3"},
		{{7, 2}, Ratio(2), "4"}, {Ratio(4), Ratio(1), "5"}, {{9, 2}, {11, 16}, "697/128"},
		{Ratio(5), Ratio(), "45/8"}, {Ratio(6), Ratio(-1), "5"}, {Ratio(7), Ratio(-1), "4"},
		{Ratio(8), Ratio(), "3"}, {Ratio(9), Ratio(3), "3"}, {Ratio(10), {7, 3}, "17/3"},
		{Ratio(13), {7, 3}, "38/3"}};
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(test.mTime.ToDouble());
		EXPECT_EQ(kUpAndBack.GetSpeed(test.mTime), test.mSpeed);
		EXPECT_EQ(kUpAndBack.DescribeWay(Ratio(), test.mTime), test.mWay);
		EXPECT_EQ(kUpAndBack.MoveBy(Ratio(5)).DescribeWay(Ratio(5), test.mTime + Ratio(5)), test.mWay);
	}
	EXPECT_THAT(kUpAndBack.FindTurns(), testing::ElementsAre(Ratio(5), Ratio(9)));
	auto const stops = kUpAndBack.FindStops(Ratio(100));
	ASSERT_EQ(stops.size(), 1u);
	EXPECT_EQ(stops[0].mFirst, Ratio(8));
	EXPECT_EQ(stops[0].mLast, Ratio(9));
	EXPECT_EQ(kUpAndBack.GetPositions(Ratio(2), Ratio(8)).mLast, Ratio(45, 8));
}

// Sums of such ways have thousands of digits.
TEST(SpeedCurve, PositionsStayExactPastManyUnlikeKeys)
{
	std::vector<SpeedCurve::Key> keys;
	constexpr int kPairs = 200;
	for (int i = 0; i < 2 * kPairs; ++i)
	{
		// There and back, at speeds without a common denominator.
		int const pair = std::min(i, 2 * kPairs - 1 - i);
		Ratio const speed(1000 + pair, 1'000'003 + 2 * pair);
		keys.push_back({Ratio(i), i < kPairs ? speed : -speed, kHold});
	}
	Ratio const end(2 * kPairs);
	keys.push_back({end, Ratio(1, 7), kHold});
	SpeedCurve const curve(keys);
	EXPECT_GT(curve.DescribeWay(Ratio(), Ratio(kPairs)).size(), 1000u);
	EXPECT_NEAR(curve.GetPosition(Ratio(kPairs)).ToDouble(), 0.2199, 0.001);
	EXPECT_EQ(curve.DescribeWay(Ratio(), end + Ratio(1, 3)), "1/21");
	EXPECT_EQ(curve.GetPosition(end + Ratio(1, 3)), Ratio(1, 21));
}

TEST(SpeedCurve, AThousandCutsAddUpToTheWhole)
{
	std::mt19937 random(16);
	std::uniform_int_distribution<std::int64_t> frame(1, 10 * 48000 - 1);
	std::vector<Ratio> cuts{Ratio(), Ratio(10)};
	for (int i = 0; i < 1000; ++i)
	{
		cuts.emplace_back(frame(random), 48000);
	}
	std::ranges::sort(cuts);
	SpeedCurve const curve({{Ratio(), Ratio(1, 4)}, {Ratio(7), Ratio(19, 10)}, {Ratio(10), Ratio(1)}});
	Ratio sum;
	for (std::size_t i = 1; i < cuts.size(); ++i)
	{
		sum += curve.GetPosition(cuts[i]) - curve.GetPosition(cuts[i - 1]);
	}
	EXPECT_EQ(sum, curve.GetPosition(Ratio(10)));
}

TEST(CurvePositions, StandAtTheIntegralWhereverTheyAre)
{
	std::mt19937 random(17);
	for (int trial = 0; trial < 50; ++trial)
	{
		SCOPED_TRACE(trial);
		SpeedCurve const curve = MakeRandomCurve(random);
		CurvePositions::Settings const settings{Ratio(48000), Ratio(44100), 100 * trial, -5, Ratio(trial, 7)};
		CurvePositions const positions(curve, settings);
		for (int i = 0; i < 40; ++i)
		{
			std::int64_t const output = std::uniform_int_distribution<std::int64_t>(-100000, 1000000)(random);
			Ratio const time(output - settings.mOrigin, 48000);
			double const way = output < settings.mOrigin ? -IntegrateSpeeds(curve, time, Ratio())
														 : IntegrateSpeeds(curve, Ratio(), time);
			CurvePositions::Place const place = positions.Find(output);
			double const found =
				static_cast<double>(place.mWhole) + std::ldexp(static_cast<double>(place.mFraction), -64);
			EXPECT_NEAR(found, way * 44100.0 - 5.0 + trial / 7.0, 3.0e-4);
			// The exact place but for the rounding of a Ratio, which a second has 2^44 of.
			Ratio const exact = curve.GetPosition(time) * Ratio(44100) + Ratio(trial, 7);
			EXPECT_NEAR(found + 5.0, exact.ToDouble(), 1.0e-8);
			EXPECT_NEAR(
				positions.GetStep(output), curve.GetSpeed(time).ToDouble() * 44100.0 / 48000.0, 1.0e-9);
		}
	}
}

TEST(CurveTimes, FindsEachPassageOfEachSecond)
{
	CurveTimes const times(kUpAndBack, Ratio(), Ratio(10));
	for (CurveTimes::Passage const& passage : times.ListPassages(0.0, 0.5))
	{
		Ratio const time(std::llround(passage.mTime * 1.0e9), 1'000'000'000);
		EXPECT_NEAR(kUpAndBack.GetPosition(time).ToDouble(), passage.mPosition, 1.0e-8);
	}
	std::vector<double> fours;
	for (CurveTimes::Passage const& passage : times.ListPassages(0.0, 1.0))
	{
		if (passage.mPosition == 4.0)
		{
			fours.push_back(passage.mTime);
		}
	}
	ASSERT_EQ(fours.size(), 3u);
	EXPECT_EQ(fours[0], 3.5);
	EXPECT_EQ(fours[1], 7.0);
	EXPECT_NEAR(*times.FindLast(3.0), 8.0, 1.0);
	EXPECT_EQ(times.FindFirst(6.5), std::nullopt);
	EXPECT_NEAR(times.GetTotalWay(), 45.0 / 8.0 + 21.0 / 8.0 + 8.0 / 3.0, 1.0e-12);
}

// A second and a half at 48 kHz.
constexpr unsigned kOutputs = 72000;

std::vector<float> Play(
	RampConverter const& inConverter, double inCycles, std::vector<std::int64_t> const& inCuts)
{
	std::vector<float> outputs(kOutputs);
	for (std::size_t i = 1; i < inCuts.size(); ++i)
	{
		auto const [first, end] = inConverter.GetInput(inCuts[i - 1], inCuts[i] - inCuts[i - 1]);
		EXPECT_LE(end - first, inConverter.CountInput(inCuts[i] - inCuts[i - 1]));
		std::vector<float> input;
		for (std::int64_t frame = first; frame < end; ++frame)
		{
			input.push_back(
				static_cast<float>(std::sin(2.0 * std::numbers::pi * inCycles * static_cast<double>(frame))));
		}
		RampConverter::Channel const channel{input.data(), outputs.data() + inCuts[i - 1]};
		inConverter.Convert(inCuts[i - 1], static_cast<unsigned>(inCuts[i] - inCuts[i - 1]), {&channel, 1});
	}
	return outputs;
}

struct Ramp
{
	char const* mName;
	SpeedCurve mCurve;
	double mLargest;
};

Ramp const kRamps[] = {
	{"half to double", SpeedCurve({{Ratio(), Ratio(1, 2)}, {Ratio(3, 2), Ratio(2)}}), 2.0},
	{"smooth up to five", SpeedCurve({{Ratio(), Ratio(1), kSmooth}, {Ratio(3, 2), Ratio(5)}}), 5.0},
	{"through zero", SpeedCurve({{Ratio(), Ratio(3, 2)}, {Ratio(3, 2), Ratio(-1)}}), 1.5},
};

TEST(RampConverter, TonesStandAtTheirExactPlaces)
{
	for (Ramp const& ramp : kRamps)
	{
		CurvePositions::Settings const settings{Ratio(48000), Ratio(48000), 0, 1000, Ratio(1, 3)};
		RampConverter const converter(ramp.mCurve, settings, RateQuality::kFull);
		CurvePositions const positions(ramp.mCurve, settings);
		for (double const part : {0.1, 0.8})
		{
			SCOPED_TRACE(testing::Message() << ramp.mName << ", " << part << " of the band");
			double const cycles = part / 2.0 / ramp.mLargest;
			std::vector<float> const outputs = Play(converter, cycles, {0, kOutputs});
			double error = 0.0;
			for (unsigned i = 0; i < kOutputs; ++i)
			{
				CurvePositions::Place const place = positions.Find(i);
				double const exact = std::sin(2.0 * std::numbers::pi * cycles *
											  (static_cast<double>(place.mWhole) +
												  std::ldexp(static_cast<double>(place.mFraction), -64)));
				error = std::max(error, std::abs(static_cast<double>(outputs[i]) - exact));
			}
			EXPECT_LT(20.0 * std::log10(error), -130.0);
		}
	}
}

// A tone that goes from the band of the output to beyond it vanishes, without a click on the way and without aliases.
TEST(RampConverter, CutOffFollowsTheSpeed)
{
	Ramp const& ramp = kRamps[0];
	RampConverter const converter(
		ramp.mCurve, {Ratio(48000), Ratio(48000), 0, 0, Ratio()}, RateQuality::kFull);
	// The highest frequency of the output at a speed of 1.25, half a second before the end.
	std::vector<float> const outputs = Play(converter, 0.4, {0, kOutputs});
	float loudest = 0.0f;
	for (unsigned i = 0; i < kOutputs; ++i)
	{
		double const speed = 0.5 + 1.5 * i / kOutputs;
		loudest = speed > 1.25 ? std::max(loudest, std::abs(outputs[i])) : loudest;
	}
	EXPECT_LT(20.0 * std::log10(static_cast<double>(loudest)), -135.0);
	// What the third differences leave of a tone that is half the band at most, they leave of nothing else but clicks.
	std::vector<float> const slow = Play(converter, 0.001, {0, kOutputs});
	double roughest = 0.0;
	for (unsigned i = 3; i < kOutputs; ++i)
	{
		double const third = static_cast<double>(slow[i]) - 3.0 * static_cast<double>(slow[i - 1]) +
							 3.0 * static_cast<double>(slow[i - 2]) - static_cast<double>(slow[i - 3]);
		roughest = std::max(roughest, std::abs(third));
	}
	EXPECT_LT(roughest, 1.0e-5);
}

TEST(RampConverter, AnyCutsAndStopsGiveTheSameBits)
{
	std::mt19937 random(18);
	SpeedCurve const stops({{Ratio(1, 4), Ratio(2), kHold}, {Ratio(1, 2), Ratio(), kHold},
		{Ratio(1), Ratio(-3, 4)}, {Ratio(5, 4), Ratio(9)}});
	RampConverter const converter(
		stops, {Ratio(48000), Ratio(96000), 77, 3, Ratio(2, 9)}, RateQuality::kDraft);
	std::vector<float> const whole = Play(converter, 0.01, {0, kOutputs});
	for (int trial = 0; trial < 5; ++trial)
	{
		std::vector<std::int64_t> cuts{0, kOutputs};
		for (int i = 0; i < 100; ++i)
		{
			cuts.push_back(std::uniform_int_distribution<std::int64_t>(0, kOutputs)(random));
		}
		std::ranges::sort(cuts);
		cuts.erase(std::unique(cuts.begin(), cuts.end()), cuts.end());
		EXPECT_EQ(Play(converter, 0.01, cuts), whole);
	}
	// From half a second on it is silent, and fades for 5 ms on both sides.
	EXPECT_TRUE(std::all_of(whole.begin() + 77 + 24000, whole.begin() + 77 + 48001,
		[](float inSample) { return inSample == 0.0f; }));
	EXPECT_NE(whole[77 + 23990], 0.0f);
	EXPECT_LT(std::abs(whole[77 + 23990]), 0.05f);
	EXPECT_EQ(converter.FindTurn(0, kOutputs), 77 + 48000);
	EXPECT_THROW(
		RampConverter(stops, {Ratio(1), Ratio(1000), 0, 0, Ratio()}, RateQuality::kDraft), HostError);
}

} // namespace
} // namespace SonaroHost::SpeedCurveTest
