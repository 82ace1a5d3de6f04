#include "Support/RealtimeGuard.h"

#include <dlfcn.h>
#include <errno.h>
#include <pthread.h>
#include <semaphore.h>

#include <cstddef>

namespace SN::Testing
{

namespace
{

// Plain thread-locals of the program itself: reaching them allocates nothing.
thread_local bool tWatching = false;
thread_local int tAllocations = 0;
thread_local int tLocks = 0;

void NoteAllocation()
{
	if (tWatching)
	{
		++tAllocations;
	}
}

void NoteLock()
{
	if (tWatching)
	{
		++tLocks;
	}
}

// The function that would have been called without this one.
template <class Function>
Function* Next(Function*, char const* inName)
{
	return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, inName));
}

} // namespace

RealtimeGuard::RealtimeGuard()
{
	tAllocations = 0;
	tLocks = 0;
	tWatching = true;
}

RealtimeGuard::~RealtimeGuard()
{
	tWatching = false;
}

int RealtimeGuard::GetAllocations() const
{
	return tAllocations;
}

int RealtimeGuard::GetLocks() const
{
	return tLocks;
}

} // namespace SN::Testing

using SN::Testing::Next;
using SN::Testing::NoteAllocation;
using SN::Testing::NoteLock;

extern "C"
{

	// The C library's own entry points, which stay what they are.
	void* __libc_malloc(std::size_t);
	void* __libc_calloc(std::size_t, std::size_t);
	void* __libc_realloc(void*, std::size_t);
	void* __libc_memalign(std::size_t, std::size_t);
	void __libc_free(void*);

	void* malloc(std::size_t inSize)
	{
		NoteAllocation();
		return __libc_malloc(inSize);
	}

	void* calloc(std::size_t inCount, std::size_t inSize)
	{
		NoteAllocation();
		return __libc_calloc(inCount, inSize);
	}

	void* realloc(void* inPointer, std::size_t inSize)
	{
		NoteAllocation();
		return __libc_realloc(inPointer, inSize);
	}

	void free(void* inPointer)
	{
		if (inPointer)
		{
			NoteAllocation();
		}
		__libc_free(inPointer);
	}

	void* memalign(std::size_t inAlignment, std::size_t inSize)
	{
		NoteAllocation();
		return __libc_memalign(inAlignment, inSize);
	}

	void* aligned_alloc(std::size_t inAlignment, std::size_t inSize)
	{
		NoteAllocation();
		return __libc_memalign(inAlignment, inSize);
	}

	int posix_memalign(void** outPointer, std::size_t inAlignment, std::size_t inSize)
	{
		NoteAllocation();
		*outPointer = __libc_memalign(inAlignment, inSize);
		return *outPointer ? 0 : ENOMEM;
	}

	int pthread_mutex_lock(pthread_mutex_t* inMutex)
	{
		static auto* const sNext = Next(&pthread_mutex_lock, "pthread_mutex_lock");
		NoteLock();
		return sNext(inMutex);
	}

	int pthread_mutex_timedlock(pthread_mutex_t* inMutex, timespec const* inTime)
	{
		static auto* const sNext = Next(&pthread_mutex_timedlock, "pthread_mutex_timedlock");
		NoteLock();
		return sNext(inMutex, inTime);
	}

	int pthread_mutex_clocklock(pthread_mutex_t* inMutex, clockid_t inClock, timespec const* inTime)
	{
		static auto* const sNext = Next(&pthread_mutex_clocklock, "pthread_mutex_clocklock");
		NoteLock();
		return sNext(inMutex, inClock, inTime);
	}

	int pthread_rwlock_rdlock(pthread_rwlock_t* inLock)
	{
		static auto* const sNext = Next(&pthread_rwlock_rdlock, "pthread_rwlock_rdlock");
		NoteLock();
		return sNext(inLock);
	}

	int pthread_rwlock_wrlock(pthread_rwlock_t* inLock)
	{
		static auto* const sNext = Next(&pthread_rwlock_wrlock, "pthread_rwlock_wrlock");
		NoteLock();
		return sNext(inLock);
	}

	int pthread_cond_wait(pthread_cond_t* inCondition, pthread_mutex_t* inMutex)
	{
		static auto* const sNext = Next(&pthread_cond_wait, "pthread_cond_wait");
		NoteLock();
		return sNext(inCondition, inMutex);
	}

	int sem_wait(sem_t* inSemaphore)
	{
		static auto* const sNext = Next(&sem_wait, "sem_wait");
		NoteLock();
		return sNext(inSemaphore);
	}

} // extern "C"
