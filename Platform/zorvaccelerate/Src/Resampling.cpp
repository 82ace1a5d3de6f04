#include "zorvaccelerate/Resampling.h"

#include "VariantChoice.h"
#include "zorvaccelerate/ResamplingVariants.h"

#include <cstring>

namespace zorvaccelerate::utility
{

namespace
{

// Wider than the baseline's registers, which then work in halves.
using Float4 = float __attribute__((vector_size(16)));
using Double4 = double __attribute__((vector_size(32)));

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

namespace
{

constinit VariantChoice sChoice(kVariants);
[[maybe_unused]] bool const sIsChosen = sChoice.Choose();

} // namespace

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

} // namespace zorvaccelerate::utility
