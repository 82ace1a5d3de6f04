#include "zorvaccelerate/VectorArithmetic.h"

#include "ProcessorLevel.h"
#include "zorvaccelerate/VectorVariants.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>

#define VARIANT_NAMESPACE Baseline
#define VARIANT_NAME "baseline"
#define VARIANT_TARGET
#include "VectorKernels.inc"

#if defined(__x86_64__)

#define VARIANT_NAMESPACE Level3
#define VARIANT_NAME "x86-64-v3"
#define VARIANT_TARGET __attribute__((target("arch=x86-64-v3")))
#include "VectorKernels.inc"

#define VARIANT_NAMESPACE Level4
#define VARIANT_NAME "x86-64-v4"
#define VARIANT_TARGET __attribute__((target("arch=x86-64-v4")))
#include "VectorKernels.inc"

#endif

namespace zorvaccelerate::utility
{

namespace
{

constexpr std::align_val_t kAlignment{64};

// The variant in use: the baseline for static objects that are made before this library's own, then the
// best one.
constinit VectorVariant const* sVariant = &Baseline::kVariant;

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

void* Allocate(std::size_t inBytes)
{
	constexpr auto kStep = static_cast<std::size_t>(kAlignment);
	return ::operator new((inBytes + kStep - 1) / kStep * kStep, kAlignment);
}

} // namespace

std::vector<VectorVariant> RunnableVariants()
{
	std::vector<VectorVariant> variants{Baseline::kVariant};
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

// The C library chooses for the processor by itself.
void Copy(unsigned inCount, float const* inInput, float* outOutput)
{
	if (inCount != 0)
	{
		std::memmove(outOutput, inInput, inCount * sizeof(float));
	}
}

void Copy(unsigned inCount, double const* inInput, double* outOutput)
{
	if (inCount != 0)
	{
		std::memmove(outOutput, inInput, inCount * sizeof(double));
	}
}

void Zero(unsigned inCount, float* outOutput)
{
	if (inCount != 0)
	{
		std::memset(outOutput, 0, inCount * sizeof(float));
	}
}

void Zero(unsigned inCount, double* outOutput)
{
	if (inCount != 0)
	{
		std::memset(outOutput, 0, inCount * sizeof(double));
	}
}

void Add(unsigned inCount, float const* inA, float const* inB, float* outOutput)
{
	sVariant->mAdd(inCount, inA, inB, outOutput);
}

void MulConstant_InPlace(unsigned inCount, float* ioData, float inFactor)
{
	sVariant->mMulConstant(inCount, ioData, inFactor, ioData);
}

void MulConstant(unsigned inCount, float const* inInput, float inFactor, float* outOutput)
{
	sVariant->mMulConstant(inCount, inInput, inFactor, outOutput);
}

void Reverse_InPlace(unsigned inCount, float* ioData)
{
	sVariant->mReverse(inCount, ioData);
}

void MulRamp(
	unsigned inCount, float const* inInput, LinearRamp const& inRamp, unsigned inFirst, float* outOutput)
{
	sVariant->mMulRamp(inCount, inInput, inRamp, inFirst, outOutput);
}

void ConvertInt32ToFloat32_InPlace(unsigned inCount, void* ioData)
{
	sVariant->mConvertInt32ToFloat32(inCount, ioData);
}

float* Malloc_Float(unsigned inCount)
{
	return static_cast<float*>(Allocate(std::size_t(inCount) * sizeof(float)));
}

double* Malloc_Double(unsigned inCount)
{
	return static_cast<double*>(Allocate(std::size_t(inCount) * sizeof(double)));
}

void Free(void* inMemory)
{
	::operator delete(inMemory, kAlignment);
}

} // namespace zorvaccelerate::utility
