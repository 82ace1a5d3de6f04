#include "zorvaccelerate/Metering.h"

#include "GuardedArray.h"
#include "Support/Common.h"
#include "zorvaccelerate/MeteringVariants.h"

namespace zorvaccelerate::utility::MeteringTest
{

TEST(Metering, EveryVariantCopiesWhatIsPlausible)
{
	std::mt19937 random(41);
	for (unsigned count = 0; count <= 35; ++count)
	{
		for (MeteringVariant const& variant : RunnableMeteringVariants())
		{
			SCOPED_TRACE(std::to_string(count) + " samples, " + variant.mName);
			GuardedArray input(count, count % 8, random);
			std::vector<float> expected = input.Values();
			float largest = 0.0f;
			for (float& sample : expected)
			{
				float const magnitude = std::fabs(sample);
				largest = std::isnan(largest) || magnitude <= largest ? largest : magnitude;
				sample = magnitude <= kLargestPlausible ? sample : 0.0f;
			}
			GuardedArray output(count, (count + 3) % 8, random);
			EXPECT_TRUE(SameBits(variant.mCopyPlausible(count, input.Data(), output.Data()), largest));
			EXPECT_TRUE(SameBits(output.Values(), expected));
			EXPECT_TRUE(output.GuardsAreWhole());
		}
	}
}

struct PlainState
{
	float mSums[2];
	float mDifferences[2];
	float mSquares;
	float mFilteredSquares;
};

float FilterPlainly(LaneFilter const& inFilter, float inSample, PlainState& ioState)
{
	float passed = inSample;
	ioState.mSquares = Rounded(ioState.mSquares + Rounded(inSample * inSample));
	for (int section = 0; section < 2; ++section)
	{
		float& sum = ioState.mSums[section];
		float& difference = ioState.mDifferences[section];
		float const next = Rounded(Rounded(passed - Rounded(inFilter.mPull[section] * sum)) +
								   Rounded(inFilter.mKeep[section] * difference));
		float const out = section == 0 ? Rounded(next - difference)
									   : Rounded(Rounded(passed + Rounded(inFilter.mSlope * difference)) +
												 Rounded(inFilter.mLift * sum));
		sum = Rounded(sum + difference);
		difference = next;
		passed = out;
	}
	ioState.mFilteredSquares = Rounded(ioState.mFilteredSquares + Rounded(passed * passed));
	return passed;
}

TEST(Metering, EveryVariantFiltersEachLaneByItself)
{
	constexpr LaneFilter kFilter{{0.25f, 0.03125f}, {0.6875f, 0.75f}, 0.375f, -0.1875f};
	std::mt19937 random(42);
	for (unsigned count = 0; count <= 35; ++count)
	{
		for (MeteringVariant const& variant : RunnableMeteringVariants())
		{
			SCOPED_TRACE(std::to_string(count) + " samples, " + variant.mName);
			unsigned const lanes = 1 + count % kFilterLanes;
			std::deque<GuardedArray> inputs;
			float const* pointers[kFilterLanes];
			LaneStates states;
			for (unsigned lane = 0; lane < kFilterLanes; ++lane)
			{
				pointers[lane] = inputs.emplace_back(count, (count + lane) % 8, random).Data();
			}
			GuardedArray start(sizeof(states) / sizeof(float), count % 8, random);
			std::memcpy(&states, start.Data(), sizeof(states));
			LaneStates const before = states;
			LaneStates unheard = states;
			GuardedArray filtered(count * kFilterLanes, (count + 1) % 8, random);
			variant.mFilterLanes(count, lanes, pointers, kFilter, states, filtered.Data());
			variant.mFilterLanes(count, lanes, pointers, kFilter, unheard, nullptr);
			EXPECT_TRUE(filtered.GuardsAreWhole());
			for (unsigned lane = 0; lane < lanes; ++lane)
			{
				PlainState plain{{before.mSums[0][lane], before.mSums[1][lane]},
					{before.mDifferences[0][lane], before.mDifferences[1][lane]}, before.mSquares[lane],
					before.mFilteredSquares[lane]};
				std::vector<float> expected;
				std::vector<float> actual;
				for (unsigned i = 0; i < count; ++i)
				{
					expected.push_back(FilterPlainly(kFilter, pointers[lane][i], plain));
					actual.push_back(filtered.Data()[i * kFilterLanes + lane]);
				}
				EXPECT_TRUE(SameBits(actual, expected)) << lane;
				std::vector<float> const end{plain.mSums[0], plain.mSums[1], plain.mDifferences[0],
					plain.mDifferences[1], plain.mSquares, plain.mFilteredSquares};
				for (LaneStates const& result : {states, unheard})
				{
					EXPECT_TRUE(SameBits({result.mSums[0][lane], result.mSums[1][lane],
											 result.mDifferences[0][lane], result.mDifferences[1][lane],
											 result.mSquares[lane], result.mFilteredSquares[lane]},
						end))
						<< lane;
				}
			}
		}
	}
}

float FindPeakPlainly(
	std::vector<float> const& inSamples, std::size_t inFirst, InterpolationTaps const& inTaps, float inPeak)
{
	float peak = inPeak;
	for (std::size_t i = inFirst; i < inSamples.size(); ++i)
	{
		float halfway = 0.0f;
		float even = 0.0f;
		float odd = 0.0f;
		for (unsigned pair = 0; pair < inTaps.mPairs; ++pair)
		{
			float const newer = inSamples[i + 1 + pair - inTaps.mPairs];
			float const older = inSamples[i - inTaps.mPairs - pair];
			float const sum = Rounded(newer + older);
			halfway = Rounded(halfway + Rounded(inTaps.mHalfway[pair] * sum));
			even = Rounded(even + Rounded(inTaps.mEven[pair] * sum));
			odd = Rounded(odd + Rounded(inTaps.mOdd[pair] * Rounded(newer - older)));
		}
		peak = std::max({peak, std::fabs(halfway), Rounded(std::fabs(even) + std::fabs(odd))});
	}
	return peak;
}

// Bounds as loose as they may be, and so tight that they decide often.
InterpolationTaps MakeTaps(unsigned inPairs)
{
	InterpolationTaps taps{};
	taps.mPairs = inPairs;
	bool const hasQuarters = inPairs == 6;
	for (unsigned pair = 0; pair < inPairs; ++pair)
	{
		float const size = 0.5f * std::pow(-0.5f, static_cast<float>(pair));
		taps.mHalfway[pair] = size;
		taps.mEven[pair] = hasQuarters ? 0.75f * size : 0.0f;
		taps.mOdd[pair] = hasQuarters ? 0.25f * size : 0.0f;
	}
	taps.mNorm = 2.0f;
	taps.mGain = 1.0f;
	taps.mCurvature = 0.5f;
	taps.mOuterNorm = 0.25f;
	return taps;
}

TEST(Metering, EveryVariantFindsTheSamePeakOfPoints)
{
	std::mt19937 random(43);
	std::uniform_real_distribution<float> noise(-1.0f, 1.0f);
	for (unsigned const pairs : {6u, 12u})
	{
		InterpolationTaps const taps = MakeTaps(pairs);
		for (unsigned trial = 0; trial < 300; ++trial)
		{
			unsigned const count = trial % 17 * 16;
			GuardedArray input(kInterpolationReach + count, trial % 8, random);
			// Noise that comes and goes, waves of many lengths, denormals and zeros of both signs.
			float const step = 3.0f / static_cast<float>(1 + trial % 50);
			for (unsigned i = 0; i < kInterpolationReach + count; ++i)
			{
				float const wave = std::sin(step * static_cast<float>(i));
				float const values[] = {noise(random), noise(random) * wave * wave, wave,
					wave + 0.01f * noise(random), 1e-41f * noise(random), i % 3 == 0 ? 0.0f : -0.0f};
				input.Data()[i] = values[trial % std::size(values)];
			}
			std::vector<float> const samples = input.Values();
			for (float const peak : {0.0f, 0.5f, 0.95f, 1.2f})
			{
				float const expected = FindPeakPlainly(samples, kInterpolationReach, taps, peak);
				for (MeteringVariant const& variant : RunnableMeteringVariants())
				{
					ASSERT_EQ(
						variant.mFindInterpolatedPeak(count, input.Data() + kInterpolationReach, taps, peak),
						expected)
						<< pairs << " pairs, trial " << trial << ", " << variant.mName;
				}
			}
			EXPECT_TRUE(input.GuardsAreWhole());
		}
	}
}

} // namespace zorvaccelerate::utility::MeteringTest
