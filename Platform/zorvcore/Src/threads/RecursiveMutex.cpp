#include "zorvcore/threads/RecursiveMutex.h"

#include "zorvcore/debug/Assert.h"

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <system_error>

namespace zorvcore::threads
{

namespace
{

timespec DeadlineAfter(unsigned inMilliseconds)
{
	// The system counts such waits on the wall clock. A step of that clock can only bring a report
	// early or late.
	constexpr long kNanosPerSecond = 1000000000;
	timespec deadline{};
	clock_gettime(CLOCK_REALTIME, &deadline);
	deadline.tv_sec += inMilliseconds / 1000;
	deadline.tv_nsec += static_cast<long>(inMilliseconds % 1000) * 1000000;
	if (deadline.tv_nsec >= kNanosPerSecond)
	{
		deadline.tv_nsec -= kNanosPerSecond;
		++deadline.tv_sec;
	}
	return deadline;
}

[[noreturn]] void ThrowLockError(int inError)
{
	throw std::system_error(inError, std::generic_category(), "RecursiveMutex");
}

int InitMutex(pthread_mutex_t& outMutex, int inProtocol)
{
	pthread_mutexattr_t attributes;
	pthread_mutexattr_init(&attributes);
	pthread_mutexattr_setprotocol(&attributes, inProtocol);
	int const error = pthread_mutex_init(&outMutex, &attributes);
	pthread_mutexattr_destroy(&attributes);
	return error;
}

} // namespace

RecursiveMutex::RecursiveMutex(char const* inName)
	: mName(inName)
{
	if (InitMutex(mMutex, PTHREAD_PRIO_INHERIT) != 0)
	{
		int const error = InitMutex(mMutex, PTHREAD_PRIO_NONE);
		if (error != 0)
		{
			ThrowLockError(error);
		}
	}
}

RecursiveMutex::~RecursiveMutex()
{
	pthread_mutex_destroy(&mMutex);
}

bool RecursiveMutex::IsOwnedByThisThread() const
{
	return mOwner.load(std::memory_order_relaxed) == pthread_self();
}

void RecursiveMutex::Lock(char const* inContext, unsigned inTimeoutMilliseconds)
{
	if (IsOwnedByThisThread())
	{
		++mDepth;
		return;
	}
	if (pthread_mutex_trylock(&mMutex) != 0)
	{
		LockSlowly(inContext, inTimeoutMilliseconds);
	}
	mOwner.store(pthread_self(), std::memory_order_relaxed);
	mOwnerContext.store(inContext, std::memory_order_relaxed);
	mDepth = 1;
}

void RecursiveMutex::LockSlowly(char const* inContext, unsigned inTimeoutMilliseconds)
{
	timespec const deadline = DeadlineAfter(inTimeoutMilliseconds);
	int error = pthread_mutex_timedlock(&mMutex, &deadline);
	if (error == ETIMEDOUT)
	{
		ReportSuspectedDeadlock(inContext);
		error = pthread_mutex_lock(&mMutex);
	}
	if (error != 0)
	{
		ThrowLockError(error);
	}
}

void RecursiveMutex::Unlock()
{
	if (!IsOwnedByThisThread())
	{
		debug::DoSimpleAssert(__FILE__, __LINE__, "A mutex was unlocked by a thread that does not own it");
		return;
	}
	if (--mDepth == 0)
	{
		mOwnerContext.store(nullptr, std::memory_order_relaxed);
		mOwner.store(pthread_t(), std::memory_order_relaxed);
		pthread_mutex_unlock(&mMutex);
	}
}

void RecursiveMutex::ReportSuspectedDeadlock(char const* inContext) const
{
	char const* const owner = mOwnerContext.load(std::memory_order_relaxed);
	char message[512];
	std::snprintf(message, sizeof(message), "Suspected deadlock on \"%s\": held by \"%s\", awaited by \"%s\"",
		mName, owner ? owner : "nobody", inContext);
	debug::DoSimpleAssert(__FILE__, __LINE__, message);
}

} // namespace zorvcore::threads
