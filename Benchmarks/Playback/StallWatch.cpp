#include "StallWatch.h"

#include "zorvcore/threads/CurrentThread.h"

#include <algorithm>
#include <pthread.h>
#include <sched.h>

namespace SonaroBenchmarks
{

StallWatch::StallWatch()
{
	for (unsigned i = 0; i < std::thread::hardware_concurrency(); ++i)
	{
		Processor& processor = mProcessors.emplace_back();
		processor.mThread = std::thread([this, i, &processor] { Watch(i, processor.mLongest); });
	}
}

StallWatch::~StallWatch()
{
	mIsEnding = true;
	for (Processor& processor : mProcessors)
	{
		processor.mThread.join();
	}
}

double StallWatch::TakeLongest()
{
	Clock::rep longest = 0;
	for (Processor& processor : mProcessors)
	{
		longest = std::max(longest, processor.mLongest.exchange(0));
	}
	return std::chrono::duration<double, std::milli>(Clock::duration(longest)).count();
}

void StallWatch::Watch(unsigned inProcessor, std::atomic<Clock::rep>& ioLongest)
{
	constexpr int kPriority = 50;
	constexpr std::chrono::microseconds kStep(500);
	cpu_set_t processors;
	CPU_ZERO(&processors);
	CPU_SET(inProcessor, &processors);
	bool const isPlaced = pthread_setaffinity_np(pthread_self(), sizeof processors, &processors) == 0;
	if (!zorvcore::threads::SetCurrentThreadRealtime(kPriority) || !isPlaced)
	{
		mIsFirst = false;
	}
	while (!mIsEnding)
	{
		Clock::time_point const due = Clock::now() + kStep;
		std::this_thread::sleep_until(due);
		ioLongest = std::max<Clock::rep>(ioLongest, (Clock::now() - due).count());
	}
}

} // namespace SonaroBenchmarks
