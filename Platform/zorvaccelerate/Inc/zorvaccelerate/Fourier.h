#pragma once

#include "zorvcore/Export.h"

// Fourier transforms of real signals in single precision, in the fastest form that the processor has. All forms give
// the same bits. Any thread.
//
// A signal of N samples is taken as one of N / 2 complex numbers, which is transformed by passes of radix 4 that put
// their results in order as they go (T. G. Stockham's method), with one pass of radix 2 at the end where the number is
// no power of 4. The two halves of the signal's spectrum are taken apart after that.
namespace zorvaccelerate::utility
{

// The sizes are powers of 2.
inline constexpr unsigned kSmallestFourierSize = 2;
inline constexpr unsigned kLargestFourierSize = 1u << 24;

// What a transform of so many samples needs: a table, which any number of transforms may share at a time, and memory to
// work in, which belongs to one at a time.
struct FourierPlan
{
	unsigned mSize;
	float const* mTable;
	float* mScratch;
};

// How many floats the table has; the scratch memory has mSize.
ZORV_API unsigned CountFourierTable(unsigned inSize);
// Fills it, with values that are worked out in double precision.
ZORV_API void FillFourierTable(unsigned inSize, float* outTable);

// Replaces N samples by the sums of sample(n) * exp(-2 pi i k n / N) over n, without a scale. The real part of sum k
// stands in element k, the imaginary one in element N - k. Those of 0 and N / 2 are real.
ZORV_API void TransformForward(FourierPlan const& inPlan, float* ioData);

// Takes back what TransformForward does: the scale is 1 / N.
ZORV_API void TransformInverse(FourierPlan const& inPlan, float* ioData);

} // namespace zorvaccelerate::utility
