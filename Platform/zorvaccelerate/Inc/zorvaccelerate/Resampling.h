#pragma once

#include "zorvcore/Export.h"

// The inner loops of resamplers, each in the fastest form that the processor has. All forms give the same
// bits: the order and the width of every step are as written here. Outputs may not overlap inputs;
// pointers need no alignment. Any thread.
namespace zorvaccelerate::utility
{

// How many outputs FilterEight makes.
inline constexpr unsigned kFilterOutputs = 8;

// Output k, in double precision: the single-precision product fraction * next[k], plus
// row[k] * (1 - fraction).
ZORV_API void InterpolateCoefficients(
	unsigned inNumTaps, float const* inRow, float const* inNext, float inFraction, double* outCoefficients);

// Eight dot products. Each starts from 0 and adds its taps one after the other in double precision; the
// sum is rounded to single precision. A tap is the product of a coefficient and a sample, formed in the
// precision of the coefficient.
ZORV_API void FilterEight(unsigned inNumTaps, double const* const* inCoefficients,
	float const* const* inSamples, float* outOutputs);
ZORV_API void FilterEight(
	unsigned inNumTaps, float const* const* inCoefficients, float const* const* inSamples, float* outOutputs);

// Gives for each position p, with i its whole part and f = p - i: (b - a) * f + a between the samples
// a at i and b at i + 1. The difference is in single precision, the rest in double. Positions are 0 or more and
// below 2^31.
ZORV_API void InterpolateLinear(
	unsigned inCount, double const* inPositions, float const* inSamples, float* outOutputs);

// Gives for each position p, with i and f likewise: the samples at i - 1 to i + 2 times the four weights that stand
// from 4 * trunc(f * inSteps) on, added from left to right in single precision. Positions are 1 or more and below
// 2^31; inSteps is a power of 2.
ZORV_API void InterpolateCubic(unsigned inCount, double const* inPositions, float const* inWeights,
	unsigned inSteps, float const* inSamples, float* outOutputs);

} // namespace zorvaccelerate::utility
