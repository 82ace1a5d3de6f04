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

} // namespace zorvcore::threads
