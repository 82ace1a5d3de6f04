#include "zorvaudiodsp/FFT.h"

#include "Support/Common.h"
#include "Support/SameBits.h"
#include "zorvaccelerate/FourierVariants.h"
#include "zorvcore/config/Exceptions.h"

#include <complex>
#include <numbers>

namespace dsp::FFTTest
{

using Numbers = std::vector<float>;

Numbers MakeNoise(unsigned inCount, unsigned inSeed)
{
	std::mt19937 random(inSeed);
	Numbers noise(inCount);
	std::generate(noise.begin(), noise.end(),
		[&] { return static_cast<float>(random() % 2000001) / 1000000.0f - 1.0f; });
	return noise;
}

// Bin inBin in double precision.
std::complex<double> SumUp(Numbers const& inSamples, std::size_t inBin)
{
	std::complex<double> sum = 0.0;
	for (std::size_t n = 0; n < inSamples.size(); ++n)
	{
		double const turns =
			static_cast<double>(inBin * n % inSamples.size()) / static_cast<double>(inSamples.size());
		sum += static_cast<double>(inSamples[n]) * std::polar(1.0, -2.0 * std::numbers::pi * turns);
	}
	return sum;
}

double Norm(Numbers const& inNumbers)
{
	double sum = 0.0;
	for (float const number : inNumbers)
	{
		sum += static_cast<double>(number) * static_cast<double>(number);
	}
	return sum;
}

TEST(FFT, EqualsTheSumsThatDefineItAndIsTakenBack)
{
	for (unsigned size = 2; size <= 8192; size *= 2)
	{
		SCOPED_TRACE(size);
		Numbers const samples = MakeNoise(size, size);
		Numbers data = samples;
		FFT fft(size);
		EXPECT_EQ(fft.GetSize(), size);
		fft.Forward(data.data());
		double error = 0.0;
		double power = 0.0;
		// Every bin of the short ones, and some of the long ones.
		for (std::size_t bin = 0; bin <= size / 2; bin += size > 1024 ? 61 : 1)
		{
			bool const isReal = bin == 0 || bin == size / 2;
			std::complex<double> const expected = SumUp(samples, bin);
			std::complex<double> const actual(
				static_cast<double>(data[bin]), isReal ? 0.0 : static_cast<double>(data[size - bin]));
			error += std::norm(actual - expected);
			power += std::norm(expected);
		}
		EXPECT_LT(std::sqrt(error / power), 2.0e-7);
		fft.Inverse(data.data());
		Numbers difference(size);
		std::transform(data.begin(), data.end(), samples.begin(), difference.begin(), std::minus<>());
		EXPECT_LT(std::sqrt(Norm(difference) / Norm(samples)), 3.0e-7);
	}
}

TEST(FFT, EveryVariantGivesTheSameBits)
{
	using namespace zorvaccelerate::utility;
	for (unsigned size = 2; size <= 16384; size *= 2)
	{
		Numbers table(CountFourierTable(size));
		FillFourierTable(size, table.data());
		// Beside the boundaries of vectors, with guards around.
		Numbers scratch(size + 2, -77.25f);
		FourierPlan const plan{size, table.data(), scratch.data() + 1};
		Numbers first;
		for (FourierVariant const& variant : RunnableFourierVariants())
		{
			SCOPED_TRACE(std::to_string(size) + ", " + variant.mName);
			Numbers data = MakeNoise(size + 2, size);
			data[1] = -0.0f;
			data[size / 2 + 1] = std::numeric_limits<float>::denorm_min();
			Numbers const guards{data.front(), data.back()};
			variant.mForward(plan, data.data() + 1);
			Numbers spectrum = data;
			variant.mInverse(plan, data.data() + 1);
			spectrum.insert(spectrum.end(), data.begin(), data.end());
			first = first.empty() ? spectrum : first;
			EXPECT_TRUE(SameBits(spectrum, first));
			EXPECT_EQ((Numbers{data.front(), data.back()}), guards);
			EXPECT_EQ(scratch.front(), -77.25f);
			EXPECT_EQ(scratch.back(), -77.25f);
		}
	}
}

TEST(FFT, TakesPowersOfTwoOnly)
{
	for (unsigned const size : {0u, 1u, 3u, 2047u, 3u << 10, 1u << 25, ~0u})
	{
		EXPECT_FALSE(FFT::IsSupported(size)) << size;
		EXPECT_THROW(FFT{size}, zorvcore::config::zorv_exception) << size;
	}
}

} // namespace dsp::FFTTest
