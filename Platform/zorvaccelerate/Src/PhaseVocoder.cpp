#include "zorvaccelerate/PhaseVocoder.h"

#include "zorvaccelerate/PhaseVocoderVariants.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace zorvaccelerate::utility
{

namespace
{

// Bins are worked out by so many at a time, step by step, so that each step is a loop of its own.
constexpr unsigned kTile = 128;

constexpr float kPiSingle = 3.1415927f;
constexpr float kTurn = 6.2831855f;

// The arc tangent of u is u + u * z * (these in powers of z = u * u), to 2^-48 of u for u up to tan(pi / 8): a
// polynomial through the zeros of Chebyshev's.
constexpr double kArcTangent[] = {-0.33333333333330924, 0.19999999997723209, -0.14285713930151891,
	0.11111089637647514, -0.090902556651390774, 0.076810413440297226, -0.065508787762982713,
	0.051687256000396124, -0.027231188880779693};

// The sine of r is r + r * z * (...), its cosine (1 - z / 2) + z * z * (...), to 2e-8 for r up to pi / 4.
constexpr float kSine[] = {-0.1666666466f, 0.008332748038f, -0.0001958784052f};
constexpr float kCosine[] = {0.04166666466f, -0.00138883028f, 2.454789162e-5f};

} // namespace

} // namespace zorvaccelerate::utility

#define KERNEL_FILE "PhaseVocoderKernels.inc"
#include "CompileForEachLevel.inc"

namespace zorvaccelerate::utility
{

std::vector<PhaseVocoderVariant> RunnablePhaseVocoderVariants()
{
	return sChoice.GetRunnable();
}

void AnalyseBins(BinGrid const& inGrid, float const* inSpectrum, float inScale, float* ioPhases,
	float* outMagnitudes, float* outFrequencies)
{
	sChoice->mAnalyseBins(inGrid, inSpectrum, inScale, ioPhases, outMagnitudes, outFrequencies);
}

void SynthesiseBins(BinGrid const& inGrid, float const* inMagnitudes, float const* inFrequencies,
	float inFrameRate, float* ioPhases, float* outSpectrum)
{
	sChoice->mSynthesiseBins(inGrid, inMagnitudes, inFrequencies, inFrameRate, ioPhases, outSpectrum);
}

void MulAdd(unsigned inCount, float const* inA, float const* inB, float* ioOutput)
{
	sChoice->mMulAdd(inCount, inA, inB, ioOutput);
}

void UpdateMeans(unsigned inNumRuns, MeansRun const* inRuns)
{
	sChoice->mUpdateMeans(inNumRuns, inRuns);
}

} // namespace zorvaccelerate::utility
