#pragma once

#include "zorvcore/Export.h"
#include "zorvcore/threads/ThreadPriority.h"

namespace zorvcore::threads
{

// Whether the calling thread is the one that the process began with. A system call on the first use in
// a thread, none after that.
ZORV_API bool CurrentThreadIsMainThread() noexcept;

// Names the calling thread for debuggers; the system shows the first 15 bytes.
ZORV_API void SetCurrentThreadName(char const* inName) noexcept;

// Sets the calling thread's priority as far as the process may; otherwise it stays as it is.
ZORV_API void SetCurrentThreadPriority(ThreadPriority inPriority) noexcept;

// Lets the calling thread run before all that are not real-time, in turns with those of the same priority, from 1 to 99
// (SCHED_RR). For threads that mostly wait and must not come late by a few milliseconds, as others of normal priority may
// finish their turn before even an urgent one. Threads that it makes do not inherit this. The priority is lowered to the
// process's limit (RLIMIT_RTPRIO); false, and nothing has changed, where that is 0. On Windows all priorities are the
// same, "time critical".
ZORV_API bool SetCurrentThreadRealtime(int inPriority) noexcept;

} // namespace zorvcore::threads
