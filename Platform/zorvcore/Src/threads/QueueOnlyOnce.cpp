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

QueueOnlyOnce::~QueueOnlyOnce() = default;

bool QueueOnlyOnce::Queue()
{
	// An exchange also where the mark stands already: the run that clears it reads from this write, and so
	// sees all that came before it.
	if (mQueued.exchange(true, std::memory_order_acq_rel))
	{
		return true;
	}
	try
	{
		if (mExecutor->Queue([self = shared_from_this()] { self->Run(); }))
		{
			return true;
		}
	}
	catch (...)
	{
		mQueued.store(false, std::memory_order_release);
		throw;
	}
	mQueued.store(false, std::memory_order_release);
	return false;
}

void QueueOnlyOnce::Run()
{
	mQueued.exchange(false, std::memory_order_acq_rel);
	mFunction();
}

} // namespace zorvcore::threads
