#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>

namespace zorvcore::threads
{

// As std::condition_variable::wait_until with a condition, for any time: where the system waits by another clock, times at
// the ends of their range overflow there.
template <class Condition>
bool WaitUntil(std::condition_variable& ioChanged, std::unique_lock<std::mutex>& ioLock,
	std::chrono::steady_clock::time_point inTime, Condition const& inCondition)
{
	using Clock = std::chrono::steady_clock;
	constexpr Clock::duration kLongestWait = std::chrono::hours(1);
	for (auto now = Clock::now(); !inCondition() && now < inTime; now = Clock::now())
	{
		ioChanged.wait_for(ioLock, std::min(inTime - now, kLongestWait));
	}
	return inCondition();
}

} // namespace zorvcore::threads
