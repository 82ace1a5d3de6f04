#pragma once

#include "zorvcore/Export.h"

// The inner loops of a phase vocoder, each in the fastest form that the processor has. All forms give the same bits:
// every step is rounded to single precision in the order that is written here, but for the functions of angles, which
// are worked out closer than that and rounded. Pointers need no alignment, and outputs overlap no inputs. Any thread.
namespace zorvaccelerate::utility
{

// The bins of a transform.
struct BinGrid
{
	// The samples of the transform, N.
	unsigned mSize = 0;
	// How many bins are worked out from bin 0 on, at most N / 2 + 1.
	unsigned mBins = 0;
	// The distance from bin to bin.
	float mHertz = 0.0f;
};

// The spectrum of N samples in the layout of TransformForward: memory for N + 2 numbers, of which the last two are not
// looked at.
//
// For each bin k of the grid: its magnitude m = sqrt(re * re + im * im), and the frequency
//
//	inScale * delta + k * inGrid.mHertz
//
// where delta is its phase minus ioPhases[k], moved by a turn into -pi to pi. The phase is kept for the next frame.
// Where m is 0, delta is 0 and the former phase stays.
ZORV_API void AnalyseBins(BinGrid const& inGrid, float const* inSpectrum, float inScale, float* ioPhases,
	float* outMagnitudes, float* outFrequencies);

// What bins sound like: for each bin k of the grid, with m its magnitude and f its frequency, ioPhases[k] grows by
// f - k * inGrid.mHertz, and with
//
//	x = ioPhases[k] * (2 pi) / inFrameRate
//
// the bin is m * cos(x) and m * sin(x), written in the layout of TransformForward for N samples. Of the bins 0 and
// N / 2, phases and imaginary parts are 0, and the latter are not written. An x beyond a thousand million counts as
// 0.
ZORV_API void SynthesiseBins(BinGrid const& inGrid, float const* inMagnitudes, float const* inFrequencies,
	float inFrameRate, float* ioPhases, float* outSpectrum);

// out = out + a * b
ZORV_API void MulAdd(unsigned inCount, float const* inA, float const* inB, float* ioOutput);

// The running mean and mean square of a signal. The count n of samples that they stand for grows up to mLimit; from
// there on they forget at that rate. With c the count before it was held to 2 and mLimit, less 1, a sample x gives
//
//	mean       = (n - 1) / n * mean + x / n               in double precision, rounded at the end
//	meanSquare = (c / n) * meanSquare + x * x / n
struct RunningMeans
{
	float mMean;
	float mMeanSquare;
	float mCount;
	float mLimit;
};

// Samples for one of them.
struct MeansRun
{
	RunningMeans* mMeans;
	float const* mSamples;
	unsigned mCount;
};

// As many as are best run together.
inline constexpr unsigned kMostMeansRuns = 4;

// Up to kMostMeansRuns of them side by side: a sample has to wait for the one before it, but not for other runs.
ZORV_API void UpdateMeans(unsigned inNumRuns, MeansRun const* inRuns);

} // namespace zorvaccelerate::utility
