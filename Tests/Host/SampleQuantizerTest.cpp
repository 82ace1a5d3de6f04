#include "SonaroHost/Metering/SampleQuantizer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace SonaroHost::SampleQuantizerTest
{
namespace
{

constexpr int kErrors = 400000;

// The errors of rounding a constant level, in steps of 16 bits.
std::vector<double> GetErrors(double inLevelInSteps, unsigned inChannel)
{
	SampleQuantizer quantizer(16, Dither::kTriangular, inChannel);
	std::vector<double> errors;
	for (int i = 0; i < kErrors; ++i)
	{
		errors.push_back(quantizer.Quantize(static_cast<float>(inLevelInSteps / 32768.0)) - inLevelInSteps);
	}
	return errors;
}

double GetMean(std::vector<double> const& inValues)
{
	double sum = 0.0;
	for (double const value : inValues)
	{
		sum += value;
	}
	return sum / static_cast<double>(inValues.size());
}

TEST(SampleQuantizer, IntegersComeBackBitForBitWithoutDither)
{
	for (int const bits : {16, 24})
	{
		SampleQuantizer quantizer(bits, Dither::kNone, 0);
		int const fullScale = 1 << (bits - 1);
		for (int value = -fullScale; value < fullScale; value += bits == 16 ? 1 : 251)
		{
			float const sample = static_cast<float>(value) / static_cast<float>(fullScale);
			ASSERT_EQ(quantizer.Quantize(sample), value);
		}
		EXPECT_EQ(quantizer.GetClippedSamples(), 0);
	}
}

TEST(SampleQuantizer, RoundsToTheNearestAndClipsAtTheEnds)
{
	struct Case
	{
		float mSample;
		int mExpected;
		bool mIsClipped;
	};
	constexpr float kStep = 1.0f / 32768.0f;
	constexpr Case kCases[] = {
		// sample                              at 16 bits   counts as clipped
		{0.4f * kStep, 0, false},
		{0.5f * kStep, 0, false},
		{0.6f * kStep, 1, false},
		{1.5f * kStep, 2, false},
		{-0.6f * kStep, -1, false},
		{-0.0f, 0, false},
		{std::numeric_limits<float>::denorm_min(), 0, false},
		{32767.4f * kStep, 32767, false},
		{32767.75f * kStep, 32767, true},
		{1.0f, 32767, true},
		{-1.0f, -32768, false},
		{-32768.75f * kStep, -32768, true},
		{1000.0f, 32767, true},
		{std::numeric_limits<float>::infinity(), 32767, true},
		{-std::numeric_limits<float>::infinity(), -32768, true},
		{std::numeric_limits<float>::quiet_NaN(), 0, true},
	};
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(test.mSample);
		SampleQuantizer quantizer(16, Dither::kNone, 0);
		EXPECT_EQ(quantizer.Quantize(test.mSample), test.mExpected);
		EXPECT_EQ(quantizer.GetClippedSamples(), test.mIsClipped ? 1 : 0);
	}
}

// With triangular dither of two steps, the error has mean 0 and a variance of a quarter step whatever the
// signal: a twelfth from rounding, a sixth from the dither.
TEST(SampleQuantizer, DitherIsWhiteAndItsOwnInEachChannel)
{
	std::vector<double> const first = GetErrors(0.3, 0);
	double const noise = 0.25 * 4.0 / std::sqrt(kErrors);
	for (unsigned const channel : {1u, 2u, 63u})
	{
		std::vector<double> const other = GetErrors(0.3, channel);
		std::vector<double> products;
		for (std::size_t i = 0; i < first.size(); ++i)
		{
			products.push_back(first[i] * other[i]);
		}
		EXPECT_NEAR(GetMean(products), 0.0, noise) << "channel " << channel;
	}
	for (std::size_t const lag : {1u, 2u, 7u, 100u})
	{
		std::vector<double> products;
		for (std::size_t i = lag; i < first.size(); ++i)
		{
			products.push_back(first[i] * first[i - lag]);
		}
		EXPECT_NEAR(GetMean(products), 0.0, noise) << "lag " << lag;
	}
}

} // namespace
} // namespace SonaroHost::SampleQuantizerTest
