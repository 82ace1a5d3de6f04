#include "zorvaccelerate/Resampling.h"

#include "ProcessorLevel.h"
#include "zorvaccelerate/ResamplingVariants.h"

#include <cstring>

namespace zorvaccelerate::utility
{

namespace
{

// Wider than the baseline's registers, which then work in halves.
using Float4 = float __attribute__((vector_size(16)));
using Double4 = double __attribute__((vector_size(32)));

} // namespace

} // namespace zorvaccelerate::utility

#if defined(__clang__)
#define KERNEL_LOOP _Pragma("clang loop vectorize(assume_safety)")
#else
#define KERNEL_LOOP _Pragma("GCC ivdep")
#endif

#define VARIANT_NAMESPACE Baseline
#define VARIANT_NAME "baseline"
#define VARIANT_TARGET
#include "ResamplingKernels.inc"

#if defined(__x86_64__)

#define VARIANT_NAMESPACE Level3
#define VARIANT_NAME "x86-64-v3"
#define VARIANT_TARGET __attribute__((target("arch=x86-64-v3")))
#include "ResamplingKernels.inc"

#define VARIANT_NAMESPACE Level4
#define VARIANT_NAME "x86-64-v4"
#define VARIANT_TARGET __attribute__((target("arch=x86-64-v4")))
#include "ResamplingKernels.inc"

#endif

namespace zorvaccelerate::utility
{

namespace
{

// The variant in use: the baseline for static objects that are made before this library's own, then the
// best one.
constinit ResamplingVariant const* sVariant = &Baseline::kVariant;

[[maybe_unused]] bool const sIsChosen = []
{
#if defined(__x86_64__)
	ProcessorLevel const level = GetProcessorLevel();
	sVariant = level == ProcessorLevel::kLevel4   ? &Level4::kVariant
			   : level == ProcessorLevel::kLevel3 ? &Level3::kVariant
												  : &Baseline::kVariant;
#endif
	return true;
}();

} // namespace

std::vector<ResamplingVariant> RunnableResamplingVariants()
{
	std::vector<ResamplingVariant> variants{Baseline::kVariant};
#if defined(__x86_64__)
	ProcessorLevel const level = GetProcessorLevel();
	if (level >= ProcessorLevel::kLevel3)
	{
		variants.push_back(Level3::kVariant);
	}
	if (level >= ProcessorLevel::kLevel4)
	{
		variants.push_back(Level4::kVariant);
	}
#endif
	return variants;
}

void InterpolateCoefficients(
	unsigned inNumTaps, float const* inRow, float const* inNext, float inFraction, double* outCoefficients)
{
	sVariant->mInterpolateCoefficients(inNumTaps, inRow, inNext, inFraction, outCoefficients);
}

void FilterEight(
	unsigned inNumTaps, double const* const* inCoefficients, float const* const* inSamples, float* outOutputs)
{
	sVariant->mFilterDouble(inNumTaps, inCoefficients, inSamples, outOutputs);
}

void FilterEight(
	unsigned inNumTaps, float const* const* inCoefficients, float const* const* inSamples, float* outOutputs)
{
	sVariant->mFilterSingle(inNumTaps, inCoefficients, inSamples, outOutputs);
}

void InterpolateLinear(unsigned inCount, double const* inPositions, float const* inSamples, float* outOutputs)
{
	sVariant->mInterpolateLinear(inCount, inPositions, inSamples, outOutputs);
}

void InterpolateCubic(unsigned inCount, double const* inPositions, float const* inWeights, unsigned inSteps,
	float const* inSamples, float* outOutputs)
{
	sVariant->mInterpolateCubic(inCount, inPositions, inWeights, inSteps, inSamples, outOutputs);
}

} // namespace zorvaccelerate::utility
