// Calling a function under a guard against machine exceptions, beside calling it alone and beside a guard that
// saves the signal mask at each call.

#include "zorvcore/utility/RunGuarded.h"

#include <benchmark/benchmark.h>

#include <csetjmp>

namespace
{

using zorvcore::utility::exceptions::RunGuarded;

[[gnu::noinline]] void Call(int& ioValue)
{
	benchmark::DoNotOptimize(++ioValue);
}

void BM_BareCall(benchmark::State& ioState)
{
	int value = 0;
	for (auto _ : ioState)
	{
		Call(value);
	}
}

void BM_GuardedCall(benchmark::State& ioState)
{
	int value = 0;
	for (auto _ : ioState)
	{
		benchmark::DoNotOptimize(RunGuarded([&] { Call(value); }));
	}
}

void BM_CallWithSavedMask(benchmark::State& ioState)
{
	int value = 0;
	sigjmp_buf jump;
	for (auto _ : ioState)
	{
		benchmark::DoNotOptimize(sigsetjmp(jump, 1));
		Call(value);
	}
}

BENCHMARK(BM_BareCall);
BENCHMARK(BM_GuardedCall);
BENCHMARK(BM_CallWithSavedMask);

} // namespace
