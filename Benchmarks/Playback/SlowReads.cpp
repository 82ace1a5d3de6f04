#include "SlowReads.h"

#include <dlfcn.h>
#include <sys/types.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

namespace SonaroBenchmarks::SlowReads
{

namespace
{

using Clock = std::chrono::steady_clock;

std::atomic<double> sBandwidth{0.0};
std::atomic<std::int64_t> sBytes{0};
std::mutex sMutex;
Clock::time_point sFree;

void Wait(ssize_t inBytes)
{
	double const bandwidth = sBandwidth.load();
	if (bandwidth <= 0.0 || inBytes <= 0)
	{
		return;
	}
	std::chrono::duration<double> const length(static_cast<double>(inBytes) / bandwidth);
	Clock::time_point end;
	{
		std::lock_guard const lock(sMutex);
		sFree = std::max(sFree, Clock::now()) + std::chrono::duration_cast<Clock::duration>(length);
		end = sFree;
	}
	std::this_thread::sleep_until(end);
}

} // namespace

void SetBandwidth(double inBytesPerSecond)
{
	std::lock_guard const lock(sMutex);
	sFree = Clock::now();
	sBandwidth = inBytesPerSecond;
}

std::int64_t CountBytes()
{
	return sBytes;
}

} // namespace SonaroBenchmarks::SlowReads

extern "C" ssize_t read(int inFile, void* outBytes, size_t inCount)
{
	using Read = ssize_t (*)(int, void*, size_t);
	static auto const sRead = reinterpret_cast<Read>(dlsym(RTLD_NEXT, "read"));
	ssize_t const count = sRead(inFile, outBytes, inCount);
	SonaroBenchmarks::SlowReads::sBytes += count > 0 ? count : 0;
	SonaroBenchmarks::SlowReads::Wait(count);
	return count;
}
