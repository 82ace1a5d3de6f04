#pragma once

namespace SN::Testing
{

// While one of these lives, every allocation, release and blocking lock of its thread is counted, in the
// test program and in the shared libraries that it has loaded. Only one at a time on a thread.
//
// It works by standing in front of the malloc family and the pthread locks, so the program that links it
// must export its symbols, and sanitizers, which do the same, must be off.
class RealtimeGuard
{
public:
	RealtimeGuard();
	~RealtimeGuard();
	RealtimeGuard(RealtimeGuard const&) = delete;
	RealtimeGuard& operator=(RealtimeGuard const&) = delete;

	// Calls to allocate, reallocate or free so far.
	int GetAllocations() const;
	// Calls that may wait for a mutex, a read-write lock, a condition or a semaphore so far.
	int GetLocks() const;
};

} // namespace SN::Testing
