#pragma once

#include "zorvcore/Export.h"

// Arithmetic on plain arrays, each operation in the fastest form that the processor has. All forms give
// the same bits. Outputs may be the inputs themselves, but may not overlap them otherwise; pointers need
// no alignment. Counts are in elements; with 0 the pointers are not looked at. Any thread.
namespace zorvaccelerate::utility
{

ZORV_API void Copy(unsigned inCount, float const* inInput, float* outOutput);
ZORV_API void Copy(unsigned inCount, double const* inInput, double* outOutput);
// out = a + b
ZORV_API void Add(unsigned inCount, float const* inA, float const* inB, float* outOutput);
// data = data * factor
ZORV_API void MulConstant_InPlace(unsigned inCount, float* ioData, float inFactor);
// out = in * factor
ZORV_API void MulConstant(unsigned inCount, float const* inInput, float inFactor, float* outOutput);
// out = (in * first) * second, the product in brackets rounded to 32 bits: the same bits as two calls.
ZORV_API void MulTwoConstants(
	unsigned inCount, float const* inInput, float inFirst, float inSecond, float* outOutput);
ZORV_API void Zero(unsigned inCount, float* outOutput);
ZORV_API void Zero(unsigned inCount, double* outOutput);
// The last element first.
ZORV_API void Reverse_InPlace(unsigned inCount, float* ioData);

// A straight line of gain, from mStart at index 0 by mDelta over mLength elements.
struct LinearRamp
{
	float mStart;
	float mDelta;
	// The length is a whole number above 0, exact in a float.
	float mLength;
};

// out(i) = in(i) * (start + (delta * k) / length) with k = inFirst + i, each step rounded to 32 bits in
// that order. inFirst + inCount is at most 2^24.
ZORV_API void MulRamp(
	unsigned inCount, float const* inInput, LinearRamp const& inRamp, unsigned inFirst, float* outOutput);

// out(i) = ((0 + in(i) * tap(0)) + in(i + 1) * tap(1)) + ... , each step rounded to 32 bits in that order: a filter over
// inCount + inNumTaps - 1 inputs. The output overlaps no input.
ZORV_API void Convolve(
	unsigned inCount, float const* inInput, unsigned inNumTaps, float const* inTaps, float* outOutput);

// The largest magnitude, 0 for no elements. What is not a number is passed over.
ZORV_API float FindPeak(unsigned inCount, float const* inInput);

// Replaces each 32-bit integer in the memory by the float nearest to it, as a double, times 2^-31.
ZORV_API void ConvertInt32ToFloat32_InPlace(unsigned inCount, void* ioData);

// Uninitialised memory, aligned to 64 bytes and padded to a multiple of it; also for a count of 0. Throw
// std::bad_alloc.
ZORV_API float* Malloc_Float(unsigned inCount);
ZORV_API double* Malloc_Double(unsigned inCount);
// Frees memory of the two; null is ignored.
ZORV_API void Free(void* inMemory);

} // namespace zorvaccelerate::utility
