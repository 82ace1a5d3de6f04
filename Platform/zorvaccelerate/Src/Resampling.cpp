#include "zorvaccelerate/Resampling.h"

#include "zorvaccelerate/ResamplingVariants.h"

#include <cstddef>
#include <cstring>
#include <utility>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace zorvaccelerate::utility
{

namespace
{

// Wider than the baseline's registers, which then work in halves.
using Float4 = float __attribute__((vector_size(16)));
using Float8 = float __attribute__((vector_size(32)));
using Double4 = double __attribute__((vector_size(32)));

// Adds a product to a sum, rounded once. Processors without an instruction for it take some 50 times as long: the
// product is exact in double precision, and the sum is rounded there to the neighbour with an odd last bit unless it is
// exact, so that rounding it once more to single precision gives what rounding it once would.
[[maybe_unused, gnu::always_inline]] inline void AddFusedPlainly(
	Float4 const& inFirst, Float4 const& inSecond, Float4& ioSum)
{
#if defined(__FP_FAST_FMAF)
	for (unsigned lane = 0; lane < 4; ++lane)
	{
		ioSum[lane] = __builtin_fmaf(inFirst[lane], inSecond[lane], ioSum[lane]);
	}
#else
	using Bits4 = unsigned long long __attribute__((vector_size(32)));
	Double4 const product =
		__builtin_convertvector(inFirst, Double4) * __builtin_convertvector(inSecond, Double4);
	Double4 const addend = __builtin_convertvector(ioSum, Double4);
	Double4 sum = product + addend;
	Double4 const part = sum - product;
	Double4 const error = (product - (sum - part)) + (addend - part);
	// A sum that is not finite stays as it is.
	auto const isToChange = (error != Double4{}) & (sum * 0.0 == Double4{});
	Bits4 bits;
	Bits4 errorBits;
	Bits4 mask;
	std::memcpy(&bits, &sum, sizeof(bits));
	std::memcpy(&errorBits, &error, sizeof(errorBits));
	std::memcpy(&mask, &isToChange, sizeof(mask));
	Bits4 const isEven = 1 - (bits & 1);
	// The exact sum is nearer to 0 where the error has the other sign.
	Bits4 const step = 1 - ((bits ^ errorBits) >> 63 << 1);
	bits = bits + (step & (0 - isEven) & mask);
	std::memcpy(&sum, &bits, sizeof(sum));
	ioSum = __builtin_convertvector(sum, Float4);
#endif
}

// The plain meaning of FilterEight, for less taps than a vector holds.
template <class Coefficient>
void FilterOneByOne(unsigned inNumTaps, Coefficient const* const* inCoefficients,
	float const* const* inSamples, float* outOutputs)
{
	for (unsigned i = 0; i < kFilterOutputs; ++i)
	{
		double sum = 0.0;
		for (unsigned k = 0; k < inNumTaps; ++k)
		{
			Coefficient const product = inCoefficients[i][k] * static_cast<Coefficient>(inSamples[i][k]);
			sum += static_cast<double>(product);
		}
		outOutputs[i] = static_cast<float>(sum);
	}
}

} // namespace

} // namespace zorvaccelerate::utility

#define KERNEL_FILE "ResamplingKernels.inc"
#include "CompileForEachLevel.inc"

namespace zorvaccelerate::utility
{

std::vector<ResamplingVariant> RunnableResamplingVariants()
{
	return sChoice.GetRunnable();
}

void InterpolateCoefficients(
	unsigned inNumTaps, float const* inRow, float const* inNext, float inFraction, double* outCoefficients)
{
	sChoice->mInterpolateCoefficients(inNumTaps, inRow, inNext, inFraction, outCoefficients);
}

void FilterEight(
	unsigned inNumTaps, double const* const* inCoefficients, float const* const* inSamples, float* outOutputs)
{
	sChoice->mFilterDouble(inNumTaps, inCoefficients, inSamples, outOutputs);
}

void FilterEight(
	unsigned inNumTaps, float const* const* inCoefficients, float const* const* inSamples, float* outOutputs)
{
	sChoice->mFilterSingle(inNumTaps, inCoefficients, inSamples, outOutputs);
}

void InterpolateLinear(unsigned inCount, double const* inPositions, float const* inSamples, float* outOutputs)
{
	sChoice->mInterpolateLinear(inCount, inPositions, inSamples, outOutputs);
}

void InterpolateCubic(unsigned inCount, double const* inPositions, float const* inWeights, unsigned inSteps,
	float const* inSamples, float* outOutputs)
{
	sChoice->mInterpolateCubic(inCount, inPositions, inWeights, inSteps, inSamples, outOutputs);
}

void FilterPlaces(unsigned inCount, FilterPlace const* inPlaces, unsigned inNumTaps, float const* inTable,
	float const* inSamples, float* outOutputs)
{
	sChoice->mFilterPlaces(inCount, inPlaces, inNumTaps, inTable, inSamples, outOutputs);
}

void FilterBetweenRows(unsigned inCount, FilterPlace const* inPlaces, unsigned inNumTaps,
	float const* inTable, float const* inSamples, float* outOutputs)
{
	sChoice->mFilterBetweenRows(inCount, inPlaces, inNumTaps, inTable, inSamples, outOutputs);
}

} // namespace zorvaccelerate::utility
