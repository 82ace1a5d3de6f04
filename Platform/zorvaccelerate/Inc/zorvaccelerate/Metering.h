#pragma once

#include "zorvcore/Export.h"

// The inner loops of meters, each in the fastest form that the processor has. All forms give the same bits: the order
// of every step is as written here, each rounded to single precision. Pointers need no alignment. Any thread.
namespace zorvaccelerate::utility
{

// Beyond this magnitude, +241 dB, a sample is a fault.
inline constexpr float kLargestPlausible = 0x1p40f;

// Copies samples, with 0 in place of those that are no numbers or beyond kLargestPlausible. Returns the largest
// magnitude of what it reads, infinity being above all and what is no number above that; 0 for no samples.
ZORV_API float CopyPlausible(unsigned inCount, float const* inInput, float* outOutput);

// Signals that are filtered side by side.
inline constexpr unsigned kFilterLanes = 16;

// A filter of two sections of second order. Each holds a sum v and a difference d, and takes a sample x so:
//
//	d' = (x - pull * v) + keep * d
//	v' = v + d
//
// The first one gives d' - d, a high-pass; the second one (x + slope * d) + lift * v.
struct LaneFilter
{
	float mPull[2];
	float mKeep[2];
	float mSlope;
	float mLift;
};

// The states of kFilterLanes filters.
struct LaneStates
{
	// The sums and differences by section and lane.
	float mSums[2][kFilterLanes];
	float mDifferences[2][kFilterLanes];
	// Sums to which the squares of what goes in and of what comes out are added, sample by sample.
	float mSquares[kFilterLanes];
	float mFilteredSquares[kFilterLanes];
};

// Filters inCount samples of each of inInputs, sixteen arrays, in at least the first inLanes lanes. outFiltered may be
// null; else it gets what comes out, a sample of sixteen lanes after the other, and overlaps no input.
ZORV_API void FilterLanes(unsigned inCount, unsigned inLanes, float const* const* inInputs,
	LaneFilter const& inFilter, LaneStates& ioStates, float* outFiltered);

// An interpolation of a signal at points between two samples. A tap i counts from the sample at the point's index
// backwards; tap i and the one as far from the other end work on the same pair of samples.
struct InterpolationTaps
{
	static constexpr unsigned kMaxPairs = 12;
	// They weigh most.
	static constexpr unsigned kMiddlePairs = 3;

	// 6 for three points at quarters of the way, 12 for one point halfway.
	unsigned mPairs;
	// Taps of the point halfway, one for both of a pair; the pair in the middle first.
	float mHalfway[kMaxPairs];
	// Half the sum and half the difference of a pair's taps for the point at a quarter of the way. The other quarter is
	// its mirror image.
	float mEven[kMaxPairs];
	float mOdd[kMaxPairs];
	// Bounds of a point's magnitude: mNorm times the largest sample, and mGain times it plus mCurvature times the
	// largest second difference. The taps outside the middle pairs add at most mOuterNorm times the largest sample.
	float mNorm;
	float mGain;
	float mCurvature;
	float mOuterNorm;
};

// So many samples in front of the first one are looked at.
inline constexpr unsigned kInterpolationReach = 34;

// The larger of inPeak and the largest magnitude of the points before each of inCount samples, a multiple of 16. All
// samples are finite, and so are their differences.
ZORV_API float FindInterpolatedPeak(
	unsigned inCount, float const* inSamples, InterpolationTaps const& inTaps, float inPeak);

} // namespace zorvaccelerate::utility
