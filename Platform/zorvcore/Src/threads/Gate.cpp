#include "zorvcore/threads/Gate.h"

#include "WaitUntil.h"

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
	std::unique_lock lock(mMutex);
	return WaitUntil(mOpened, lock, inTime, [this] { return mOpen; });
}

} // namespace zorvcore::threads
