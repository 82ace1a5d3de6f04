#include "zorvaccelerate/PhaseVocoder.h"

#include "GuardedArray.h"
#include "Support/Common.h"
#include "zorvaccelerate/PhaseVocoderVariants.h"

namespace zorvaccelerate::utility::PhaseVocoderTest
{

constexpr unsigned kSizes[] = {2, 4, 8, 16, 62, 256, 510, 2048};
constexpr float kHalfTurn = 3.1415927f;
constexpr float kTurn = 6.2831855f;

double Wide(float inValue)
{
	return static_cast<double>(inValue);
}

// What a kernel works on, between guards.
struct Bins
{
	Bins(unsigned inSize, std::mt19937& ioRandom)
		: mSpectrum(inSize + 2, inSize % 7, ioRandom),
		  mPhases(inSize / 2 + 1, 1, ioRandom),
		  mMagnitudes(inSize / 2 + 1, 2, ioRandom),
		  mFrequencies(inSize / 2 + 1, 3, ioRandom)
	{
	}

	bool GuardsAreWhole() const
	{
		return mSpectrum.GuardsAreWhole() && mPhases.GuardsAreWhole() && mMagnitudes.GuardsAreWhole() &&
			   mFrequencies.GuardsAreWhole();
	}
	std::vector<float> Values()
	{
		std::vector<float> all = mPhases.Values();
		for (GuardedArray* const array : {&mMagnitudes, &mFrequencies, &mSpectrum})
		{
			std::vector<float> const values = array->Values();
			all.insert(all.end(), values.begin(), values.end());
		}
		return all;
	}

	GuardedArray mSpectrum;
	GuardedArray mPhases;
	GuardedArray mMagnitudes;
	GuardedArray mFrequencies;
};

// Ordinary numbers, and now and then a zero of either sign.
void FillOrdinary(GuardedArray& outArray, unsigned inCount, float inLargest, std::mt19937& ioRandom)
{
	std::generate_n(outArray.Data(), inCount,
		[&]
		{
			float const share = static_cast<float>(ioRandom() % 2001) / 1000.0f - 1.0f;
			return ioRandom() % 8 == 0 ? std::copysign(0.0f, share) : share * inLargest;
		});
}

TEST(PhaseVocoder, AnalysisFollowsTheFormulas)
{
	std::mt19937 random(41);
	for (unsigned const size : kSizes)
	{
		for (unsigned const numBins : {size / 2 + 1, size / 4 + 1})
		{
			Bins bins(size, random);
			FillOrdinary(bins.mSpectrum, size, 1.0f, random);
			FillOrdinary(bins.mPhases, size / 2 + 1, kHalfTurn, random);
			std::vector<float> const former = bins.mPhases.Values();
			std::vector<float> const spectrum = bins.mSpectrum.Values();
			AnalyseBins({size, numBins, 23.4375f}, bins.mSpectrum.Data(), 15.0f, bins.mPhases.Data(),
				bins.mMagnitudes.Data(), bins.mFrequencies.Data());
			for (unsigned k = 0; k < numBins; ++k)
			{
				SCOPED_TRACE(std::to_string(k) + " of " + std::to_string(size));
				float const re = spectrum[k];
				float const im = k == 0 || k == size / 2 ? 0.0f : spectrum[size - k];
				float const magnitude = std::sqrt(Rounded(Rounded(re * re) + Rounded(im * im)));
				float const phase = static_cast<float>(std::atan2(Wide(im), Wide(re)));
				float delta = phase - former[k];
				delta = delta > kHalfTurn ? delta - kTurn : delta < -kHalfTurn ? delta + kTurn : delta;
				delta = magnitude == 0.0f ? 0.0f : delta;
				EXPECT_EQ(bins.mMagnitudes.Data()[k], magnitude);
				EXPECT_EQ(bins.mPhases.Data()[k], magnitude == 0.0f ? former[k] : phase);
				EXPECT_EQ(bins.mFrequencies.Data()[k],
					Rounded(Rounded(15.0f * delta) + Rounded(static_cast<float>(k) * 23.4375f)));
			}
			EXPECT_TRUE(bins.GuardsAreWhole());
		}
	}
}

TEST(PhaseVocoder, SynthesisFollowsTheFormulas)
{
	std::mt19937 random(42);
	for (unsigned const size : kSizes)
	{
		for (float const largest : {10.0f, 3.0e6f})
		{
			Bins bins(size, random);
			FillOrdinary(bins.mPhases, size / 2 + 1, largest, random);
			FillOrdinary(bins.mMagnitudes, size / 2 + 1, 1.0f, random);
			FillOrdinary(bins.mFrequencies, size / 2 + 1, 24000.0f, random);
			std::vector<float> const former = bins.mPhases.Values();
			SynthesiseBins({size, size / 2 + 1, 23.4375f}, bins.mMagnitudes.Data(), bins.mFrequencies.Data(),
				134.0f, bins.mPhases.Data(), bins.mSpectrum.Data());
			for (unsigned k = 0; k <= size / 2; ++k)
			{
				SCOPED_TRACE(std::to_string(k) + " of " + std::to_string(size));
				bool const isReal = k == 0 || k == size / 2;
				float const step = bins.mFrequencies.Data()[k] - Rounded(static_cast<float>(k) * 23.4375f);
				float const phase = isReal ? 0.0f : Rounded(former[k] + step);
				double const x = Wide(Rounded(phase * kTurn) / 134.0f);
				double const magnitude = Wide(bins.mMagnitudes.Data()[k]);
				EXPECT_EQ(bins.mPhases.Data()[k], phase);
				EXPECT_NEAR(Wide(bins.mSpectrum.Data()[k]), magnitude * std::cos(x), 1.5e-7);
				if (!isReal)
				{
					EXPECT_NEAR(Wide(bins.mSpectrum.Data()[size - k]), magnitude * std::sin(x), 1.5e-7);
				}
			}
			EXPECT_TRUE(bins.GuardsAreWhole());
		}
	}
}

// From the second frame on, what the first one has left is part of it.
TEST(PhaseVocoder, EveryVariantGivesTheSameBitsOfBins)
{
	for (unsigned const size : kSizes)
	{
		std::vector<float> expected;
		for (PhaseVocoderVariant const& variant : RunnablePhaseVocoderVariants())
		{
			SCOPED_TRACE(std::to_string(size) + ", " + variant.mName);
			std::mt19937 random(43);
			Bins bins(size, random);
			for (unsigned frame = 0; frame < 3; ++frame)
			{
				variant.mAnalyseBins({size, size / 2 + 1, 23.4375f}, bins.mSpectrum.Data(), 15.0f,
					bins.mPhases.Data(), bins.mMagnitudes.Data(), bins.mFrequencies.Data());
				variant.mSynthesiseBins({size, size / 2 + 1, 23.4375f}, bins.mMagnitudes.Data(),
					bins.mFrequencies.Data(), 134.0f, bins.mPhases.Data(), bins.mSpectrum.Data());
			}
			std::vector<float> const actual = bins.Values();
			expected = expected.empty() ? actual : expected;
			EXPECT_TRUE(SameBits(actual, expected));
			EXPECT_TRUE(bins.GuardsAreWhole());
		}
	}
}

TEST(PhaseVocoder, EveryVariantAddsProductsAlike)
{
	std::mt19937 random(44);
	for (unsigned count = 0; count <= 70; ++count)
	{
		for (PhaseVocoderVariant const& variant : RunnablePhaseVocoderVariants())
		{
			SCOPED_TRACE(std::to_string(count) + ", " + variant.mName);
			GuardedArray a(count, count % 8, random);
			GuardedArray b(count, (count + 3) % 8, random);
			GuardedArray sum(count, (count + 5) % 8, random);
			std::vector<float> expected = sum.Values();
			for (unsigned i = 0; i < count; ++i)
			{
				expected[i] = Rounded(expected[i] + Rounded(a.Data()[i] * b.Data()[i]));
			}
			variant.mMulAdd(count, a.Data(), b.Data(), sum.Data());
			EXPECT_TRUE(SameBits(sum.Values(), expected));
			EXPECT_TRUE(sum.GuardsAreWhole());
		}
	}
}

// Sample by sample.
void UpdatePlainly(RunningMeans& ioMeans, float inX)
{
	float const c = ioMeans.mCount - 1.0f;
	float const n = std::min(ioMeans.mCount, ioMeans.mLimit);
	double const kept = (Wide(n) - 1.0) / Wide(n) * Wide(ioMeans.mMean);
	ioMeans.mMean = static_cast<float>(kept + Wide(inX) / Wide(n));
	ioMeans.mMeanSquare =
		Rounded(Rounded(Rounded(c / n) * ioMeans.mMeanSquare) + Rounded(Rounded(inX * inX) / n));
	ioMeans.mCount = n + 1.0f;
}

// Runs of different lengths side by side, before, at and after the limit.
TEST(PhaseVocoder, EveryVariantUpdatesMeansSampleBySample)
{
	for (PhaseVocoderVariant const& variant : RunnablePhaseVocoderVariants())
	{
		std::mt19937 random(45);
		for (unsigned trial = 0; trial < 60; ++trial)
		{
			SCOPED_TRACE(std::to_string(trial) + ", " + variant.mName);
			auto const numRuns = static_cast<unsigned>(trial % (kMostMeansRuns + 1));
			std::vector<std::vector<float>> samples(numRuns);
			std::vector<RunningMeans> actual;
			for (unsigned run = 0; run < numRuns; ++run)
			{
				samples[run].resize(random() % 600);
				std::generate(samples[run].begin(), samples[run].end(),
					[&] { return static_cast<float>(random() % 2001) / 1000.0f - 0.9f; });
				actual.push_back({0.0f, 0.02f, 2.0f, static_cast<float>(2 + random() % 2000)});
			}
			std::vector<RunningMeans> expected = actual;
			for (unsigned block = 0; block < 5; ++block)
			{
				std::vector<MeansRun> runs;
				for (unsigned run = 0; run < numRuns; ++run)
				{
					auto const count = static_cast<unsigned>(samples[run].size());
					runs.push_back({&actual[run], samples[run].data(), count});
					for (float const x : samples[run])
					{
						UpdatePlainly(expected[run], x);
					}
				}
				variant.mUpdateMeans(numRuns, runs.data());
			}
			for (unsigned run = 0; run < numRuns; ++run)
			{
				EXPECT_TRUE(SameBits(actual[run].mMean, expected[run].mMean));
				EXPECT_TRUE(SameBits(actual[run].mMeanSquare, expected[run].mMeanSquare));
				EXPECT_EQ(actual[run].mCount, expected[run].mCount);
			}
		}
	}
}

} // namespace zorvaccelerate::utility::PhaseVocoderTest
