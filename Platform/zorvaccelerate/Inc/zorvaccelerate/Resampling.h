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

// The number of taps of FilterPlaces is a multiple of this.
inline constexpr unsigned kFilterTaps = 32;

// Where an output of FilterPlaces stands. Places that share a row are best neighbours.
struct FilterPlace
{
	// Index of its first coefficient in the table, of its first sample, and of itself.
	unsigned mRow = 0;
	unsigned mSample = 0;
	unsigned mOutput = 0;
	// How far it is between its row and the next one, from 0 to 1.
	float mFraction = 0.0f;
};

// A dot product of inNumTaps taps for each place, by 32 sums that start from 0: with j from 0 to 15, sum j adds the
// products of the taps j, j + 16 and so on up to the middle, and sum 16 + j those of the taps inNumTaps - 16 + j,
// inNumTaps - 32 + j and so on down to the middle, so that the largest come last; each product is rounded together with
// its sum. Then sum 16 + j is added to sum j, j + 8 to j, j + 4 to j, j + 2 to j and the last two.
ZORV_API void FilterPlaces(unsigned inCount, FilterPlace const* inPlaces, unsigned inNumTaps,
	float const* inTable, float const* inSamples, float* outOutputs);

// The same between rows: a row is four lists of inNumTaps numbers, and with a to d the k-th of each list and f the
// place's fraction, coefficient k is ((d * f + c) * f + b) * f + a.
ZORV_API void FilterBetweenRows(unsigned inCount, FilterPlace const* inPlaces, unsigned inNumTaps,
	float const* inTable, float const* inSamples, float* outOutputs);

} // namespace zorvaccelerate::utility
