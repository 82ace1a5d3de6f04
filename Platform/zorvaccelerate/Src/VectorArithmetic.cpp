#include "zorvaccelerate/VectorArithmetic.h"

#include "zorvaccelerate/VectorVariants.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>

#define KERNEL_FILE "VectorKernels.inc"
#include "CompileForEachLevel.inc"

namespace zorvaccelerate::utility
{

namespace
{

constexpr std::align_val_t kAlignment{64};

void* Allocate(std::size_t inBytes)
{
	constexpr auto kStep = static_cast<std::size_t>(kAlignment);
	return ::operator new((inBytes + kStep - 1) / kStep * kStep, kAlignment);
}

} // namespace

std::vector<VectorVariant> RunnableVariants()
{
	return sChoice.GetRunnable();
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
	sChoice->mAdd(inCount, inA, inB, outOutput);
}

void MulConstant_InPlace(unsigned inCount, float* ioData, float inFactor)
{
	sChoice->mMulConstant(inCount, ioData, inFactor, ioData);
}

void MulConstant(unsigned inCount, float const* inInput, float inFactor, float* outOutput)
{
	sChoice->mMulConstant(inCount, inInput, inFactor, outOutput);
}

void MulTwoConstants(unsigned inCount, float const* inInput, float inFirst, float inSecond, float* outOutput)
{
	sChoice->mMulTwoConstants(inCount, inInput, inFirst, inSecond, outOutput);
}

void Reverse_InPlace(unsigned inCount, float* ioData)
{
	sChoice->mReverse(inCount, ioData);
}

void MulRamp(
	unsigned inCount, float const* inInput, LinearRamp const& inRamp, unsigned inFirst, float* outOutput)
{
	sChoice->mMulRamp(inCount, inInput, inRamp, inFirst, outOutput);
}

void Convolve(
	unsigned inCount, float const* inInput, unsigned inNumTaps, float const* inTaps, float* outOutput)
{
	sChoice->mConvolve(inCount, inInput, inNumTaps, inTaps, outOutput);
}

float FindPeak(unsigned inCount, float const* inInput)
{
	return sChoice->mFindPeak(inCount, inInput);
}

void ConvertInt32ToFloat32_InPlace(unsigned inCount, void* ioData)
{
	sChoice->mConvertInt32ToFloat32(inCount, ioData);
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
