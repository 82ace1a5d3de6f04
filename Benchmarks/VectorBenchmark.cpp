// The vector kernels beside plain loops compiled at -O3 for the baseline processor.

#include "zorvaccelerate/VectorArithmetic.h"

#include <benchmark/benchmark.h>

#include <vector>

namespace
{

using namespace zorvaccelerate::utility;

struct Plain
{
	static void Copy(unsigned inCount, float const* inInput, float* outOutput)
	{
		for (unsigned i = 0; i < inCount; ++i)
		{
			outOutput[i] = inInput[i];
		}
	}
	static void Add(unsigned inCount, float const* inA, float const* inB, float* outOutput)
	{
		for (unsigned i = 0; i < inCount; ++i)
		{
			outOutput[i] = inA[i] + inB[i];
		}
	}
	static void MulConstant(unsigned inCount, float const* inInput, float inFactor, float* outOutput)
	{
		for (unsigned i = 0; i < inCount; ++i)
		{
			outOutput[i] = inInput[i] * inFactor;
		}
	}
	static void Reverse(unsigned inCount, float* ioData)
	{
		for (unsigned i = 0; i < inCount / 2; ++i)
		{
			std::swap(ioData[i], ioData[inCount - 1 - i]);
		}
	}
	static void MulRamp(
		unsigned inCount, float const* inInput, LinearRamp const& inRamp, unsigned inFirst, float* outOutput)
	{
		for (unsigned i = 0; i < inCount; ++i)
		{
			float const rise = inRamp.mDelta * static_cast<float>(inFirst + i);
			outOutput[i] = inInput[i] * (inRamp.mStart + rise / inRamp.mLength);
		}
	}
};

struct Kernel
{
	static void Copy(unsigned inCount, float const* inInput, float* outOutput)
	{
		zorvaccelerate::utility::Copy(inCount, inInput, outOutput);
	}
	static void Add(unsigned inCount, float const* inA, float const* inB, float* outOutput)
	{
		zorvaccelerate::utility::Add(inCount, inA, inB, outOutput);
	}
	static void MulConstant(unsigned inCount, float const* inInput, float inFactor, float* outOutput)
	{
		zorvaccelerate::utility::MulConstant(inCount, inInput, inFactor, outOutput);
	}
	static void Reverse(unsigned inCount, float* ioData) { Reverse_InPlace(inCount, ioData); }
	static void MulRamp(
		unsigned inCount, float const* inInput, LinearRamp const& inRamp, unsigned inFirst, float* outOutput)
	{
		zorvaccelerate::utility::MulRamp(inCount, inInput, inRamp, inFirst, outOutput);
	}
};

// Two inputs and an output of the length that the benchmark is run for.
struct Arrays
{
	explicit Arrays(benchmark::State const& inState)
		: mCount(static_cast<unsigned>(inState.range(0))),
		  mA(mCount, 0.25f),
		  mB(mCount, 0.5f),
		  mOut(mCount, 0.0f)
	{
	}
	void Finish(benchmark::State& ioState, int inArraysTouched) const
	{
		ioState.SetBytesProcessed(
			static_cast<std::int64_t>(ioState.iterations()) * mCount * inArraysTouched * 4);
	}

	unsigned mCount;
	std::vector<float> mA;
	std::vector<float> mB;
	std::vector<float> mOut;
};

template <class Form>
void BM_Copy(benchmark::State& ioState)
{
	Arrays arrays(ioState);
	for (auto _ : ioState)
	{
		Form::Copy(arrays.mCount, arrays.mA.data(), arrays.mOut.data());
		benchmark::ClobberMemory();
	}
	arrays.Finish(ioState, 2);
}

template <class Form>
void BM_Add(benchmark::State& ioState)
{
	Arrays arrays(ioState);
	for (auto _ : ioState)
	{
		Form::Add(arrays.mCount, arrays.mA.data(), arrays.mB.data(), arrays.mOut.data());
		benchmark::ClobberMemory();
	}
	arrays.Finish(ioState, 3);
}

template <class Form>
void BM_MulConstant(benchmark::State& ioState)
{
	Arrays arrays(ioState);
	for (auto _ : ioState)
	{
		Form::MulConstant(arrays.mCount, arrays.mA.data(), 0.7f, arrays.mOut.data());
		benchmark::ClobberMemory();
	}
	arrays.Finish(ioState, 2);
}

template <class Form>
void BM_Reverse(benchmark::State& ioState)
{
	Arrays arrays(ioState);
	for (auto _ : ioState)
	{
		Form::Reverse(arrays.mCount, arrays.mA.data());
		benchmark::ClobberMemory();
	}
	arrays.Finish(ioState, 2);
}

template <class Form>
void BM_MulRamp(benchmark::State& ioState)
{
	Arrays arrays(ioState);
	for (auto _ : ioState)
	{
		Form::MulRamp(arrays.mCount, arrays.mA.data(), {0.25f, 0.5f, 4800.0f}, 100, arrays.mOut.data());
		benchmark::ClobberMemory();
	}
	arrays.Finish(ioState, 2);
}

#define SONARO_COMPARE(operation)                                                                            \
	BENCHMARK(operation<Plain>)->Arg(64)->Arg(512)->Arg(4096);                                               \
	BENCHMARK(operation<Kernel>)->Arg(64)->Arg(512)->Arg(4096)

SONARO_COMPARE(BM_Copy);
SONARO_COMPARE(BM_Add);
SONARO_COMPARE(BM_MulConstant);
SONARO_COMPARE(BM_Reverse);
SONARO_COMPARE(BM_MulRamp);

} // namespace
