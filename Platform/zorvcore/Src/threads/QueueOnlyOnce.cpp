#include "zorvcore/threads/QueueOnlyOnce.h"

#include <utility>

namespace zorvcore::threads
{

std::shared_ptr<QueueOnlyOnce> QueueOnlyOnce::Create(
	std::function<void()> inFunction, std::shared_ptr<AsyncThreadedExecutor> inExecutor)
{
	return std::shared_ptr<QueueOnlyOnce>(new QueueOnlyOnce(std::move(inFunction), std::move(inExecutor)));
}

QueueOnlyOnce::QueueOnlyOnce(
	std::function<void()> inFunction, std::shared_ptr<AsyncThreadedExecutor> inExecutor)
	: mFunction(std::move(inFunction)),
	  mExecutor(std::move(inExecutor))
{
}

bool QueueOnlyOnce::Queue()
{
	// The mark is set only when the executor has taken the task, so that no trigger counts on a run that is
	// then refused. A run clears it under the lock, and so sees all that came before the triggers.
	std::lock_guard const lock(mMutex);
	mQueued = mQueued || mExecutor->Queue([self = shared_from_this()] { self->Run(); });
	return mQueued;
}

void QueueOnlyOnce::Run()
{
	{
		std::lock_guard const lock(mMutex);
		mQueued = false;
	}
	mFunction();
}

} // namespace zorvcore::threads
