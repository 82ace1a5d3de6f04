#include "zorvaccelerate/Resampling.h"

#include "GuardedArray.h"
#include "Support/Common.h"
#include "zorvaccelerate/ResamplingVariants.h"

#include <bit>
#include <cmath>
#include <cstdint>

namespace zorvaccelerate::utility::ResamplingTest
{

double RoundedDouble(double inValue)
{
	double volatile const value = inValue;
	return value;
}

double Wide(float inValue)
{
	return static_cast<double>(inValue);
}

// Values whose sum shows the order of its additions.
float OrdinaryValue(std::mt19937& ioRandom)
{
	return std::ldexp(
		static_cast<float>(ioRandom() % 2000001) - 1000000.0f, static_cast<int>(ioRandom() % 50) - 30);
}

// As FilterEight for one output.
float AddInOrder(std::vector<double> const& inCoefficients, std::vector<float> const& inSamples)
{
	double sum = 0.0;
	for (std::size_t k = 0; k < inCoefficients.size(); ++k)
	{
		sum = RoundedDouble(sum + RoundedDouble(inCoefficients[k] * Wide(inSamples[k])));
	}
	return static_cast<float>(sum);
}

float AddInOrder(std::vector<float> const& inCoefficients, std::vector<float> const& inSamples)
{
	double sum = 0.0;
	for (std::size_t k = 0; k < inCoefficients.size(); ++k)
	{
		sum = RoundedDouble(sum + Wide(Rounded(inCoefficients[k] * inSamples[k])));
	}
	return static_cast<float>(sum);
}

TEST(Resampling, EveryVariantFiltersInTheOrderOfTheTaps)
{
	std::mt19937 random(31);
	for (unsigned taps = 0; taps <= 35; ++taps)
	{
		for (ResamplingVariant const& variant : RunnableResamplingVariants())
		{
			SCOPED_TRACE(std::to_string(taps) + " taps, " + variant.mName);
			std::deque<GuardedArray> samples;
			std::deque<GuardedArray> rows;
			std::deque<std::vector<double>> coefficients;
			float const* samplePointers[kFilterOutputs];
			float const* rowPointers[kFilterOutputs];
			double const* coefficientPointers[kFilterOutputs];
			std::vector<float> expectedDouble;
			std::vector<float> expectedSingle;
			for (unsigned i = 0; i < kFilterOutputs; ++i)
			{
				samples.emplace_back(taps, (taps + i) % 8, random);
				rows.emplace_back(taps, (taps + 3 * i) % 8, random);
				if (i != taps % kFilterOutputs)
				{
					std::generate_n(samples[i].Data(), taps, [&] { return OrdinaryValue(random); });
					std::generate_n(rows[i].Data(), taps, [&] { return OrdinaryValue(random); });
				}
				// One step aside, so that the doubles lie on no boundary of a vector.
				coefficients.emplace_back(taps + 1);
				std::vector<double> exact;
				for (unsigned k = 0; k < taps; ++k)
				{
					exact.push_back(Wide(OrdinaryValue(random)) * (1.0 + 1e-12));
					coefficients[i][k + 1] = exact.back();
				}
				samplePointers[i] = samples[i].Data();
				rowPointers[i] = rows[i].Data();
				coefficientPointers[i] = coefficients[i].data() + 1;
				expectedDouble.push_back(AddInOrder(exact, samples[i].Values()));
				expectedSingle.push_back(AddInOrder(rows[i].Values(), samples[i].Values()));
			}
			GuardedArray output(kFilterOutputs, taps % 8, random);
			variant.mFilterDouble(taps, coefficientPointers, samplePointers, output.Data());
			EXPECT_TRUE(SameBits(output.Values(), expectedDouble));
			variant.mFilterSingle(taps, rowPointers, samplePointers, output.Data());
			EXPECT_TRUE(SameBits(output.Values(), expectedSingle));
			EXPECT_TRUE(output.GuardsAreWhole());
		}
	}
}

TEST(Resampling, EveryVariantInterpolatesCoefficientsAlike)
{
	std::mt19937 random(32);
	for (unsigned taps = 0; taps <= 35; ++taps)
	{
		for (ResamplingVariant const& variant : RunnableResamplingVariants())
		{
			SCOPED_TRACE(std::to_string(taps) + " taps, " + variant.mName);
			GuardedArray row(taps, taps % 8, random);
			GuardedArray next(taps, (taps + 1) % 8, random);
			float const fraction = static_cast<float>(random() % 1000) / 1000.0f;
			std::vector<double> output(taps + 2, -77.25);
			variant.mInterpolateCoefficients(taps, row.Data(), next.Data(), fraction, output.data() + 1);
			for (std::size_t k = 0; k < taps; ++k)
			{
				double const share = Wide(Rounded(fraction * next.Values()[k]));
				double const rest =
					RoundedDouble(Wide(row.Values()[k]) * RoundedDouble(1.0 - Wide(fraction)));
				double const expected = share + rest;
				EXPECT_TRUE(
					std::bit_cast<std::uint64_t>(output[k + 1]) == std::bit_cast<std::uint64_t>(expected) ||
					(std::isnan(output[k + 1]) && std::isnan(expected)));
			}
			EXPECT_EQ(output.front(), -77.25);
			EXPECT_EQ(output.back(), -77.25);
		}
	}
}

// Awkward samples at positions all over them, up to the last that is allowed.
TEST(Resampling, EveryVariantInterpolatesSamplesAlike)
{
	constexpr unsigned kSamples = 50;
	constexpr unsigned kSteps = 16;
	std::mt19937 random(33);
	for (unsigned count = 0; count <= 35; ++count)
	{
		for (ResamplingVariant const& variant : RunnableResamplingVariants())
		{
			SCOPED_TRACE(std::to_string(count) + " outputs, " + variant.mName);
			GuardedArray samples(kSamples, count % 8, random);
			GuardedArray weights(4 * kSteps, (count + 1) % 8, random);
			std::vector<float> const s = samples.Values();
			std::vector<float> const w = weights.Values();
			std::vector<double> positions;
			std::vector<float> linear;
			std::vector<float> cubic;
			for (unsigned i = 0; i < count; ++i)
			{
				std::size_t const index = 1 + random() % (kSamples - 3);
				double const fraction = static_cast<double>(random() % 4096) / 4096.0;
				positions.push_back(static_cast<double>(index) + fraction);
				float const slope = Rounded(s[index + 1] - s[index]);
				linear.push_back(static_cast<float>(RoundedDouble(Wide(slope) * fraction) + Wide(s[index])));
				std::size_t const row = 4 * static_cast<std::size_t>(fraction * kSteps);
				float sum = Rounded(s[index - 1] * w[row]);
				for (std::size_t k = 1; k < 4; ++k)
				{
					sum = Rounded(sum + Rounded(s[index - 1 + k] * w[row + k]));
				}
				cubic.push_back(sum);
			}
			GuardedArray output(count, (count + 5) % 8, random);
			variant.mInterpolateLinear(count, positions.data(), samples.Data(), output.Data());
			EXPECT_TRUE(SameBits(output.Values(), linear));
			variant.mInterpolateCubic(
				count, positions.data(), weights.Data(), kSteps, samples.Data(), output.Data());
			EXPECT_TRUE(SameBits(output.Values(), cubic));
			EXPECT_TRUE(output.GuardsAreWhole());
		}
	}
}

// A product and a sum, rounded once. The C library of Windows rounds its fma more than once. The product is exact in
// double precision; the sum is rounded to odd there (Boldo and Melquiond, 2008).
float AddFused(float inFirst, float inSecond, float inAddend)
{
	double const product = static_cast<double>(inFirst) * static_cast<double>(inSecond);
	double const addend = static_cast<double>(inAddend);
	double const sum = product + addend;
	double const part = sum - product;
	double const error = (product - (sum - part)) + (addend - part);
	bool const isExact = !std::isfinite(sum) || error == 0.0;
	bool const isOdd = (std::bit_cast<std::uint64_t>(sum) & 1u) != 0;
	return static_cast<float>(isExact || isOdd ? sum : std::nextafter(sum, std::copysign(HUGE_VAL, error)));
}

// As FilterPlaces and FilterBetweenRows for one output.
float AddFromBothEnds(unsigned inTaps, FilterPlace const& inPlace, bool inIsBetween,
	std::vector<float> const& inTable, std::vector<float> const& inSamples)
{
	constexpr unsigned kHalf = kFilterTaps / 2;
	float sums[kFilterTaps] = {};
	auto const add = [&](unsigned inTap, float& ioSum)
	{
		float const* const row = inTable.data() + inPlace.mRow + inTap;
		float coefficient = inIsBetween ? row[3 * inTaps] : row[0];
		for (unsigned rank = 3; inIsBetween && rank-- > 0;)
		{
			coefficient = Rounded(Rounded(coefficient * inPlace.mFraction) + row[rank * inTaps]);
		}
		ioSum = AddFused(coefficient, inSamples[inPlace.mSample + inTap], ioSum);
	};
	for (unsigned tap = 0; tap < inTaps / 2; ++tap)
	{
		add(tap, sums[tap % kHalf]);
		// From the other end, by steps of 16.
		add(inTaps - kHalf - tap / kHalf * kHalf + tap % kHalf, sums[kHalf + tap % kHalf]);
	}
	for (unsigned half = kHalf; half > 0; half /= 2)
	{
		for (unsigned j = 0; j < half; ++j)
		{
			sums[j] = Rounded(sums[j] + sums[j + half]);
		}
	}
	return sums[0];
}

TEST(Resampling, EveryVariantFiltersPlacesAlike)
{
	constexpr unsigned kRows = 3;
	constexpr unsigned kSpare = 40;
	std::mt19937 random(34);
	for (unsigned taps = 0; taps <= 5 * kFilterTaps; taps += kFilterTaps)
	{
		for (unsigned count = 0; count <= 13; ++count)
		{
			GuardedArray table(4 * taps * kRows, (taps / kFilterTaps + count) % 8, random);
			GuardedArray samples(taps + kSpare, count % 8, random);
			// Awkward values are left at the ends alone, so that most sums are finite.
			std::generate_n(table.Data(), 4 * taps * (kRows - 1), [&] { return OrdinaryValue(random); });
			std::generate_n(samples.Data() + 1, taps + kSpare / 2, [&] { return OrdinaryValue(random); });
			std::vector<FilterPlace> places(count);
			// The last output comes first.
			for (unsigned i = 0; i < count; ++i)
			{
				// Neighbours often share a row.
				auto const row = static_cast<unsigned>(random() % kRows);
				places[i] = {i > 0 && random() % 4 != 0 ? places[i - 1].mRow : 4 * taps * row,
					static_cast<unsigned>(random() % (kSpare + 1)), count - 1 - i,
					static_cast<float>(random() % 4097) / 4096.0f};
			}
			for (bool const isBetween : {false, true})
			{
				std::vector<float> expected(count);
				for (FilterPlace const& place : places)
				{
					expected[place.mOutput] =
						AddFromBothEnds(taps, place, isBetween, table.Values(), samples.Values());
				}
				for (ResamplingVariant const& variant : RunnableResamplingVariants())
				{
					SCOPED_TRACE(std::to_string(taps) + " taps, " + variant.mName);
					GuardedArray output(count, (count + 3) % 8, random);
					(isBetween ? variant.mFilterBetweenRows : variant.mFilterPlaces)(
						count, places.data(), taps, table.Data(), samples.Data(), output.Data());
					EXPECT_TRUE(SameBits(output.Values(), expected)) << isBetween;
					EXPECT_TRUE(output.GuardsAreWhole());
				}
			}
		}
	}
}

} // namespace zorvaccelerate::utility::ResamplingTest
