#pragma once

#include "zorvcore/Export.h"

#include <atomic>
#include <pthread.h>

namespace zorvcore::threads
{

// A mutex that its owner may lock again, and that reports when a wait looks like a deadlock. A thread of high
// priority lends its priority to the owner while it waits, where the system can.
//
// The texts given to it are kept as pointers and must be literals or live as long.
class ZORV_API RecursiveMutex
{
public:
	explicit RecursiveMutex(char const* inName);
	RecursiveMutex(RecursiveMutex const&) = delete;
	RecursiveMutex& operator=(RecursiveMutex const&) = delete;
	~RecursiveMutex();

	// Locks, however long it takes. A wait longer than inTimeoutMilliseconds is reported once through
	// DoSimpleAssert as a suspected deadlock, with the mutex's name, the context in which the owner
	// locked first, and inContext; then the wait goes on.
	void Lock(char const* inContext, unsigned inTimeoutMilliseconds);

	// Called once for each Lock, on the same thread. A call by a thread that is not the owner is reported and does
	// nothing.
	void Unlock();

private:
	bool IsOwnedByThisThread() const;
	void LockSlowly(char const* inContext, unsigned inTimeoutMilliseconds);
	void ReportSuspectedDeadlock(char const* inContext) const;

	char const* const mName;
	pthread_mutex_t mMutex;
	// A thread finds itself here only if it wrote itself; the system gives no thread the value 0.
	std::atomic<pthread_t> mOwner{};
	std::atomic<char const*> mOwnerContext{nullptr};
	// The owner's alone.
	unsigned mDepth = 0;
};

// Holds the lock for a scope.
class ScopedRecursiveLock
{
public:
	// The wait within which a lock is expected to be had.
	static constexpr unsigned kDefaultTimeoutMilliseconds = 60000;

	ScopedRecursiveLock(RecursiveMutex& inMutex, char const* inContext,
		unsigned inTimeoutMilliseconds = kDefaultTimeoutMilliseconds)
		: mMutex(inMutex)
	{
		mMutex.Lock(inContext, inTimeoutMilliseconds);
	}
	ScopedRecursiveLock(ScopedRecursiveLock const&) = delete;
	ScopedRecursiveLock& operator=(ScopedRecursiveLock const&) = delete;
	~ScopedRecursiveLock() { mMutex.Unlock(); }

private:
	RecursiveMutex& mMutex;
};

} // namespace zorvcore::threads
