#pragma once

#include "zorvcore/Export.h"
#include "zorvcore/threads/AsyncThreadedExecutor.h"

#include <functional>
#include <memory>
#include <mutex>

namespace zorvcore::threads
{

// A task that may be triggered many times but stands in its executor's queue at most once. The mark that
// it is queued goes just before it runs: a trigger during the run queues it again, and what a thread
// wrote before its trigger is seen by a run that begins after it.
//
// Threads  Any. With an executor of several threads, runs may overlap.
class ZORV_API QueueOnlyOnce : public std::enable_shared_from_this<QueueOnlyOnce>
{
public:
	static std::shared_ptr<QueueOnlyOnce> Create(
		std::function<void()> inFunction, std::shared_ptr<AsyncThreadedExecutor> inExecutor);

	QueueOnlyOnce(QueueOnlyOnce const&) = delete;
	QueueOnlyOnce& operator=(QueueOnlyOnce const&) = delete;

	// Whether a run will follow: false when the executor was stopped. While queued, this stays alive. The
	// executor is not to run the task within its Queue.
	bool Queue();

private:
	QueueOnlyOnce(std::function<void()> inFunction, std::shared_ptr<AsyncThreadedExecutor> inExecutor);

	void Run();

	std::function<void()> const mFunction;
	std::shared_ptr<AsyncThreadedExecutor> const mExecutor;
	std::mutex mMutex;
	bool mQueued = false;
};

} // namespace zorvcore::threads
