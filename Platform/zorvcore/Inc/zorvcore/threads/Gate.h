#pragma once

#include "zorvcore/Export.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace zorvcore::threads
{

// A gate that threads wait at until it is open. It stays as it was set. Any thread; a thread that has
// passed may destroy it.
class ZORV_API Gate
{
public:
	explicit Gate(bool inOpen);
	Gate(Gate const&) = delete;
	Gate& operator=(Gate const&) = delete;

	void Open();
	void Close();

	void PassThrough();
	// False when the time came and the gate was still closed.
	bool PassThroughUntil(std::chrono::steady_clock::time_point inTime);

private:
	std::mutex mMutex;
	std::condition_variable mOpened;
	bool mOpen;
};

} // namespace zorvcore::threads
