#include "zorvcore/threads/Gate.h"

#include <algorithm>

namespace zorvcore::threads
{

Gate::Gate(bool inOpen)
	: mOpen(inOpen)
{
}

void Gate::Open()
{
	// Notified under the lock, since whoever passes may destroy the gate.
	std::lock_guard const lock(mMutex);
	mOpen = true;
	mOpened.notify_all();
}

void Gate::Close()
{
	std::lock_guard const lock(mMutex);
	mOpen = false;
}

void Gate::PassThrough()
{
	std::unique_lock lock(mMutex);
	mOpened.wait(lock, [this] { return mOpen; });
}

bool Gate::PassThroughUntil(std::chrono::steady_clock::time_point inTime)
{
	// Where the system waits by another clock, times at the ends of their range would overflow.
	using Clock = std::chrono::steady_clock;
	constexpr Clock::duration kLongestWait = std::chrono::hours(1);
	std::unique_lock lock(mMutex);
	for (auto now = Clock::now(); !mOpen && now < inTime; now = Clock::now())
	{
		mOpened.wait_for(lock, std::min(inTime - now, kLongestWait));
	}
	return mOpen;
}

} // namespace zorvcore::threads
