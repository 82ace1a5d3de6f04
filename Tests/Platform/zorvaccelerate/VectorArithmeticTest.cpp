#include "zorvaccelerate/VectorArithmetic.h"

#include "GuardedArray.h"
#include "Support/Common.h"
#include "Support/Trials.h"
#include "zorvaccelerate/VectorVariants.h"

namespace zorvaccelerate::utility::VectorArithmeticTest
{

constexpr unsigned kLargestCount = 67;
constexpr LinearRamp kRamp{0.3f, -1.7f, 4801.0f};
constexpr unsigned kRampFirst = 4700;
constexpr float kTaps[5] = {0.3f, -1.7f, 1e-20f, 0.0f, 3.1f};

using Values = std::vector<float> const&;
// One operation: what a variant does to an output, given two inputs, and what each element should be.
struct Operation
{
	char const* mName;
	void (*mRun)(VectorVariant const& inVariant, unsigned n, float const* a, float const* b, float* out);
	float (*mExpected)(Values a, Values b, Values out, std::size_t i);
};
constexpr Operation kOperations[] = {
	{"add", [](auto& v, unsigned n, auto a, auto b, float* out) { v.mAdd(n, a, b, out); },
		[](Values a, Values b, Values, std::size_t i) { return Rounded(a[i] + b[i]); }},
	{"add in place", [](auto& v, unsigned n, auto a, auto, float* out) { v.mAdd(n, out, a, out); },
		[](Values a, Values, Values out, std::size_t i) { return Rounded(out[i] + a[i]); }},
	{"multiply", [](auto& v, unsigned n, auto a, auto, float* out) { v.mMulConstant(n, a, 0.7f, out); },
		[](Values a, Values, Values, std::size_t i) { return Rounded(a[i] * 0.7f); }},
	{"multiply in place",
		[](auto& v, unsigned n, auto, auto, float* out) { v.mMulConstant(n, out, -1e-20f, out); },
		[](Values, Values, Values out, std::size_t i) { return Rounded(out[i] * -1e-20f); }},
	{"multiply twice",
		[](auto& v, unsigned n, auto a, auto, float* out) { v.mMulTwoConstants(n, a, 0.7f, -1.3e-3f, out); },
		[](Values a, Values, Values, std::size_t i) { return Rounded(Rounded(a[i] * 0.7f) * -1.3e-3f); }},
	{"multiply twice in place",
		[](auto& v, unsigned n, auto, auto, float* out) { v.mMulTwoConstants(n, out, 3e20f, 3e20f, out); },
		[](Values, Values, Values out, std::size_t i) { return Rounded(Rounded(out[i] * 3e20f) * 3e20f); }},
	{"reverse", [](auto& v, unsigned n, auto, auto, float* out) { v.mReverse(n, out); },
		[](Values, Values, Values out, std::size_t i) { return out[out.size() - 1 - i]; }},
	{"ramp", [](auto& v, unsigned n, auto a, auto, float* out) { v.mMulRamp(n, a, kRamp, kRampFirst, out); },
		[](Values a, Values, Values, std::size_t i)
		{
			float const rise = Rounded(kRamp.mDelta * static_cast<float>(kRampFirst + i));
			return Rounded(a[i] * Rounded(kRamp.mStart + Rounded(rise / kRamp.mLength)));
		}},
	{"convolve",
		[](auto& v, unsigned n, auto a, auto, float* out)
		{ v.mConvolve(n < 4 ? 0 : n - 4, a, 5, kTaps, out); },
		[](Values a, Values, Values out, std::size_t i)
		{
			float sum = 0.0f;
			for (std::size_t tap = 0; i + 4 < a.size() && tap < 5; ++tap)
			{
				sum = Rounded(sum + Rounded(a[i + tap] * kTaps[tap]));
			}
			return i + 4 < a.size() ? sum : out[i];
		}},
	{"integers to floats",
		[](auto& v, unsigned n, auto, auto, float* out) { v.mConvertInt32ToFloat32(n, out); },
		[](Values, Values, Values out, std::size_t i)
		{ return static_cast<float>(std::bit_cast<std::int32_t>(out[i]) / 2147483648.0); }},
};

TEST(VectorArithmetic, EveryVariantGivesTheBitsOfThePlainLoop)
{
	constexpr unsigned kStep = SN::Testing::GetNumTrials(8) == 8 ? 1 : 5;
	std::mt19937 random(11);
	for (Operation const& operation : kOperations)
	{
		for (unsigned count = 0; count <= kLargestCount; ++count)
		{
			for (unsigned offsets = 0; offsets < 64; offsets += kStep * (1 + offsets % 3))
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
					bool const isWhole = a.GuardsAreWhole() && b.GuardsAreWhole() && out.GuardsAreWhole();
					ASSERT_TRUE(SameBits(out.Values(), expected) && isWhole)
						<< operation.mName << ", " << variant.mName << ", " << count << " elements at "
						<< offsets;
				}
			}
		}
	}
}

// The functions for floats are what buffers and ramps are made of, and are tested there.
TEST(VectorArithmetic, DoublesAreCopiedAndZeroedAndNothingIsHarmless)
{
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
		// At every place of a vector and after the last whole one.
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

} // namespace zorvaccelerate::utility::VectorArithmeticTest
