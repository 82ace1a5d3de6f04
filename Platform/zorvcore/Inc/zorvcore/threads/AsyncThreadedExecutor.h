#pragma once

#include "zorvcore/Export.h"
#include "zorvcore/threads/ThreadPriority.h"

#include <functional>
#include <memory>
#include <string_view>

namespace zorvcore::threads
{

// Runs tasks in the order of queuing on threads of its own. Its threads start with the first tasks, not
// before. A task that throws is reported through DoSimpleAssert, and its thread goes on.
//
// Each operation may be called on any thread, in tasks of this executor too. Releasing the last
// reference disposes of it.
class ZORV_API AsyncThreadedExecutor
{
public:
	virtual ~AsyncThreadedExecutor();

	// False, and the task is dropped, once the executor was stopped. Throws std::system_error when there
	// is no thread yet and none can be made, and the task is not queued then.
	virtual bool Queue(std::function<void()> inTask) = 0;

	// While paused no further task begins; those that run go on. Nothing can be paused after Stop.
	virtual void Pause() = 0;
	virtual void Resume() = 0;

	// Refuses new tasks, lifts a pause, and waits until all queued tasks have run. On one of the
	// executor's own threads it does not wait; the tasks still run.
	virtual void Stop() = 0;

	// Stops, then waits for the threads to end, in each of several calls at once. On one of the executor's own
	// threads it detaches them instead, and they end on their own when all tasks have run.
	virtual void Dispose() = 0;
};

// inName is also the name of the threads. inThreadCount: the most that run at once, at least 1; with one,
// tasks never overlap.
ZORV_API std::shared_ptr<AsyncThreadedExecutor> CreateAsyncThreadedExecutor(
	std::string_view inName, unsigned inThreadCount = 1, ThreadPriority inPriority = ThreadPriority::kNormal);

} // namespace zorvcore::threads
