#include "SonaroHost/Otio/RationalTime.h"

#include "Support/Trials.h"

#include <cmath>
#include <cstdint>
#include <random>
#include <utility>

#include <boost/multiprecision/cpp_int.hpp>
#include <gtest/gtest.h>

namespace SonaroHost::Otio::RationalTimeTest
{
namespace
{

using Exact = boost::multiprecision::cpp_rational;

Exact ToExact(Ratio const& inRatio)
{
	return Exact(inRatio.GetNumerator(), inRatio.GetDenominator());
}

TEST(OtioRationalTime, DecimalRatesStandForTheExactOnes)
{
	std::pair<double, Ratio> const cases[] = {
		{23.976, {24000, 1001}},
		{23.98, {24000, 1001}},
		{23.976023976023978, {24000, 1001}},
		{24.0, Ratio(24)},
		{24.5, {49, 2}},
		{29.97, {30000, 1001}},
		{59.94, {60000, 1001}},
		{119.88, {120000, 1001}},
		{47952.05, {48000000, 1001}},
		{47952.0, Ratio(47952)},
		{12.5, {25, 2}},
		{1.0e-4, {1, 10000}},
		{254016000000.0, Ratio(254016000000)},
	};
	for (auto const& [rate, exact] : cases)
	{
		SCOPED_TRACE(rate);
		EXPECT_EQ(ToExactRate(rate), exact);
	}
	EXPECT_EQ(ToSeconds({86.4, 24.0}), Ratio(18, 5));
	EXPECT_EQ(ToSeconds({1.0 / 3.0, 1.0}), Ratio(1, 3));
	EXPECT_EQ(Ratio(1001) * ToExactRate(23.976), Ratio(24000));
}

TEST(OtioRationalTime, DoublesStandForTheSimplestFractionThatRoundsToThem)
{
	std::pair<double, Ratio> const cases[] = {
		{0.01, {1, 100}},
		{-0.01, {-1, 100}},
		{100.0, Ratio(100)},
		{44100.0 / 48000.0, {147, 160}},
		{-48000.0 / 44100.0, {-160, 147}},
		{99999.0 / 100003.0, {99999, 100003}},
		{1000.0 / 1001.0, {1000, 1001}},
		{0.0, Ratio()},
	};
	for (auto const& [value, exact] : cases)
	{
		EXPECT_EQ(Ratio::FromExactDouble(value), exact) << value;
	}
	std::mt19937_64 random(12);
	std::uniform_real_distribution<double> exponents(-20.0, 20.0);
	for (unsigned i = 0; i < 2000; ++i)
	{
		double const value = std::exp2(exponents(random));
		ASSERT_EQ(Ratio::FromExactDouble(value).ToDouble(), value) << i;
		ASSERT_EQ(Ratio::FromExactDouble(-value).ToDouble(), -value) << i;
	}
}

TEST(OtioRationalTime, SumsOfUsualRatesAreExact)
{
	constexpr double kRates[] = {23.976, 24, 25, 29.97, 30, 44100, 48000, 96000, 90000, 59.94, 1000};
	std::mt19937 random(5);
	Ratio sum;
	Exact exact = 0;
	for (unsigned i = 0; i < SN::Testing::GetNumTrials(20000); ++i)
	{
		double const rate = kRates[random() % std::size(kRates)];
		auto const value = static_cast<double>(static_cast<int>(random() % 4001) - 2000);
		sum += ToSeconds({value, rate});
		exact += Exact(static_cast<int>(value)) / ToExact(ToExactRate(rate));
		ASSERT_EQ(ToExact(sum), exact) << i;
		ASSERT_EQ(sum < Ratio(0), exact < 0) << i;
	}
	Exact const samples = exact * 48000;
	Exact const rest = samples - Exact(ToSamples(sum, 48000));
	EXPECT_TRUE(rest >= Exact(-1, 2) && rest < Exact(1, 2));
}

TEST(OtioRationalTime, ArithmeticBeyondSixtyThreeBitsRoundsToTheNearest)
{
	std::mt19937_64 random(11);
	for (unsigned i = 0; i < SN::Testing::GetNumTrials(2000); ++i)
	{
		auto const draw = [&random] { return static_cast<std::int64_t>(random() >> (1 + random() % 62)); };
		Ratio const a(draw() * (random() % 2 == 0 ? 1 : -1), draw() + 1);
		Ratio const b(draw() + 1, draw() + 1);
		struct Result
		{
			Ratio mRatio;
			Exact mExact;
		};
		for (Result const& result : {Result{a + b, ToExact(a) + ToExact(b)}, {a - b, ToExact(a) - ToExact(b)},
				 {a * b, ToExact(a) * ToExact(b)}, {a / b, ToExact(a) / ToExact(b)}})
		{
			Exact const magnitude = abs(result.mExact);
			if (magnitude >= Exact(std::int64_t{1} << 62))
			{
				EXPECT_GE(abs(ToExact(result.mRatio)), Exact(std::int64_t{1} << 62) - 1);
				continue;
			}
			// The grid is as fine as 62 bits leave it.
			Exact const error = abs(ToExact(result.mRatio) - result.mExact);
			Exact const grid = magnitude < 131072 ? Exact(1, std::int64_t{1} << 44)
												  : 4 * magnitude / Exact(std::int64_t{1} << 62);
			ASSERT_LE(2 * error, grid) << i << ": " << a.ToDouble() << " and " << b.ToDouble();
		}
	}
}

TEST(OtioRationalTime, RoundedProductsAreThoseOfTheProduct)
{
	std::mt19937_64 random(12);
	for (unsigned i = 0; i < SN::Testing::GetNumTrials(2000); ++i)
	{
		auto const draw = [&random] { return static_cast<std::int64_t>(random() >> (1 + random() % 62)); };
		Ratio const ratio(draw() * (random() % 2 == 0 ? 1 : -1), draw() + 1);
		std::int64_t const factor = random() % 2 == 0 ? 48000 : draw();
		ASSERT_EQ(ratio.RoundTimes(factor), (ratio * Ratio(factor)).Round())
			<< ratio.ToDouble() << " " << factor;
	}
	for (std::int64_t const half : {-3, -1, 1, 3})
	{
		EXPECT_EQ(Ratio(half, 96000).RoundTimes(48000), (half + 1) / 2);
	}
}

TEST(OtioRationalTime, AnyDoubleBecomesANearRatio)
{
	std::mt19937_64 random(3);
	std::uniform_real_distribution<double> exponents(-320.0, 25.0);
	for (int i = 0; i < 20000; ++i)
	{
		double const value = std::pow(10.0, exponents(random)) * (i % 2 == 0 ? 1.0 : -1.0);
		Ratio const ratio = Ratio::FromDouble(value);
		if (std::abs(value) < 4.0e18)
		{
			ASSERT_LE(std::abs(ratio.ToDouble() - value), 1.5e-10 + std::abs(value) * 1.0e-15) << value;
		}
	}
}

} // namespace
} // namespace SonaroHost::Otio::RationalTimeTest
