#include "zorvaccelerate/VectorArithmetic.h"

#include "GuardedArray.h"
#include "zorvaccelerate/VectorVariants.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <vector>

namespace zorvaccelerate::utility
{
namespace
{

constexpr unsigned kLargestCount = 67;
// One operation: what a variant does to an output, given two inputs, and what each element should be.
struct Operation
{
	char const* mName;
	std::function<void(VectorVariant const&, unsigned, float const*, float const*, float*)> mRun;
	std::function<float(std::vector<float> const& inA, std::vector<float> const& inB,
		std::vector<float> const& inOut, std::size_t inIndex)>
		mExpected;
};

constexpr LinearRamp kRamp{0.3f, -1.7f, 4801.0f};
constexpr unsigned kRampFirst = 4700;

std::vector<Operation> Operations()
{
	using Values = std::vector<float> const&;
	return {
		{"add",
			[](VectorVariant const& inVariant, unsigned inCount, float const* inA, float const* inB,
				float* outOut) { inVariant.mAdd(inCount, inA, inB, outOut); },
			[](Values inA, Values inB, Values, std::size_t i) { return Rounded(inA[i] + inB[i]); }},
		{"add in place",
			[](VectorVariant const& inVariant, unsigned inCount, float const* inA, float const*,
				float* outOut) { inVariant.mAdd(inCount, outOut, inA, outOut); },
			[](Values inA, Values, Values inOut, std::size_t i) { return Rounded(inOut[i] + inA[i]); }},
		{"multiply",
			[](VectorVariant const& inVariant, unsigned inCount, float const* inA, float const*,
				float* outOut) { inVariant.mMulConstant(inCount, inA, 0.7f, outOut); },
			[](Values inA, Values, Values, std::size_t i) { return Rounded(inA[i] * 0.7f); }},
		{"multiply in place",
			[](VectorVariant const& inVariant, unsigned inCount, float const*, float const*, float* outOut)
			{ inVariant.mMulConstant(inCount, outOut, -1e-20f, outOut); },
			[](Values, Values, Values inOut, std::size_t i) { return Rounded(inOut[i] * -1e-20f); }},
		{"reverse",
			[](VectorVariant const& inVariant, unsigned inCount, float const*, float const*, float* outOut)
			{ inVariant.mReverse(inCount, outOut); },
			[](Values, Values, Values inOut, std::size_t i) { return inOut[inOut.size() - 1 - i]; }},
		{"ramp",
			[](VectorVariant const& inVariant, unsigned inCount, float const* inA, float const*,
				float* outOut) { inVariant.mMulRamp(inCount, inA, kRamp, kRampFirst, outOut); },
			[](Values inA, Values, Values, std::size_t i)
			{
				float const rise = Rounded(kRamp.mDelta * static_cast<float>(kRampFirst + i));
				float const gain = Rounded(kRamp.mStart + Rounded(rise / kRamp.mLength));
				return Rounded(inA[i] * gain);
			}},
		{"integers to floats",
			[](VectorVariant const& inVariant, unsigned inCount, float const*, float const*, float* outOut)
			{ inVariant.mConvertInt32ToFloat32(inCount, outOut); },
			[](Values, Values, Values inOut, std::size_t i)
			{ return static_cast<float>(std::bit_cast<std::int32_t>(inOut[i]) / 2147483648.0); }},
	};
}

TEST(VectorArithmetic, EveryVariantGivesTheBitsOfThePlainLoop)
{
	std::mt19937 random(11);
	for (Operation const& operation : Operations())
	{
		for (unsigned count = 0; count <= kLargestCount; ++count)
		{
			for (unsigned offsets = 0; offsets < 64; offsets += 1 + offsets % 3)
			{
				for (VectorVariant const& variant : RunnableVariants())
				{
					GuardedArray a(count, offsets % 8, random);
					GuardedArray b(count, (offsets + 3) % 8, random);
					GuardedArray out(count, offsets / 8, random);
					std::vector<float> expected(count);
					for (std::size_t i = 0; i < count; ++i)
					{
						expected[i] = operation.mExpected(a.Values(), b.Values(), out.Values(), i);
					}
					operation.mRun(variant, count, a.Data(), b.Data(), out.Data());
					ASSERT_TRUE(SameBits(out.Values(), expected))
						<< operation.mName << ", " << variant.mName << ", " << count << " elements at "
						<< offsets;
					ASSERT_TRUE(a.GuardsAreWhole() && b.GuardsAreWhole() && out.GuardsAreWhole())
						<< operation.mName << ", " << variant.mName << ", " << count << " elements at "
						<< offsets;
				}
			}
		}
	}
}

TEST(VectorArithmetic, TheFunctionsDoWhatTheirVariantsDo)
{
	std::mt19937 random(12);
	VectorVariant const best = RunnableVariants().back();
	constexpr unsigned kCount = 53;
	GuardedArray a(kCount, 1, random);
	GuardedArray b(kCount, 2, random);
	GuardedArray out(kCount, 3, random);
	GuardedArray expected(kCount, 0, random);

	Add(kCount, a.Data(), b.Data(), out.Data());
	best.mAdd(kCount, a.Data(), b.Data(), expected.Data());
	EXPECT_TRUE(SameBits(out.Values(), expected.Values()));
	MulConstant_InPlace(kCount, out.Data(), 0.3f);
	MulConstant(kCount, expected.Data(), 0.3f, expected.Data());
	EXPECT_TRUE(SameBits(out.Values(), expected.Values()));
	MulRamp(kCount, a.Data(), kRamp, 5, out.Data());
	best.mMulRamp(kCount, a.Data(), kRamp, 5, expected.Data());
	EXPECT_TRUE(SameBits(out.Values(), expected.Values()));
	Copy(kCount, b.Data(), out.Data());
	EXPECT_TRUE(SameBits(out.Values(), b.Values()));
	Reverse_InPlace(kCount, out.Data());
	EXPECT_EQ(out.Data()[0], b.Data()[kCount - 1]);
	Zero(kCount, out.Data());
	EXPECT_EQ(out.Values(), std::vector<float>(kCount, 0.0f));
	EXPECT_TRUE(out.GuardsAreWhole());

	double const wide[] = {1.5, -2.5, 3.5};
	double copied[3] = {};
	Copy(3, wide, copied);
	EXPECT_EQ(copied[2], 3.5);
	Zero(2, copied);
	EXPECT_EQ(copied[1], 0.0);
	EXPECT_EQ(copied[2], 3.5);
	Copy(0, static_cast<float const*>(nullptr), nullptr);
	Zero(0, static_cast<float*>(nullptr));
}

TEST(VectorArithmetic, ThePeakIsTheLargestMagnitudeOfNumbers)
{
	float const nan = std::numeric_limits<float>::quiet_NaN();
	float const infinity = std::numeric_limits<float>::infinity();
	struct Case
	{
		std::vector<float> mValues;
		float mPeak;
	};
	Case const cases[] = {
		{{}, 0.0f},
		{{-0.0f, 1e-42f}, 1e-42f},
		{{0.5f, -2.5f, nan, -nan}, 2.5f},
		{{nan}, 0.0f},
		{{1.0f, -infinity, nan}, infinity},
	};
	for (Case const& test : cases)
	{
		// At every place of a vector and behind the last whole one.
		for (std::size_t lead = 0; lead <= kLargestCount; ++lead)
		{
			std::vector<float> values(lead, 0.0f);
			values.insert(values.end(), test.mValues.begin(), test.mValues.end());
			for (VectorVariant const& variant : RunnableVariants())
			{
				auto const count = static_cast<unsigned>(values.size());
				ASSERT_EQ(variant.mFindPeak(count, values.data()), test.mPeak)
					<< variant.mName << ", " << lead;
				ASSERT_EQ(FindPeak(count, values.data()), test.mPeak);
			}
		}
	}
}

TEST(VectorArithmetic, MemoryIsAlignedForTheWidestVectors)
{
	for (unsigned const count : {0u, 1u, 17u, 100000u})
	{
		float* const floats = Malloc_Float(count);
		double* const doubles = Malloc_Double(count);
		EXPECT_EQ(reinterpret_cast<std::uintptr_t>(floats) % 64, 0u);
		EXPECT_EQ(reinterpret_cast<std::uintptr_t>(doubles) % 64, 0u);
		Free(floats);
		Free(doubles);
	}
	Free(nullptr);
}

} // namespace
} // namespace zorvaccelerate::utility
