#pragma once

#include "zorvcore/Export.h"

#include <memory>
#include <type_traits>

namespace zorvcore::utility::exceptions
{

// What RunGuarded returns when nothing happened.
constexpr unsigned kNoMachineException = 0;

namespace detail
{

ZORV_API unsigned RunGuarded(void (*inCall)(void*), void* inContext);

} // namespace detail

// Installs the handlers that RunGuarded needs, once for the process: of SIGSEGV, SIGBUS, SIGFPE and SIGILL on POSIX, and
// there of SIGTRAP on ARM, where compilers trap by it; a vectored one on Windows, none with Microsoft's compiler. Later calls do nothing. For those who must not make system calls when they first guard
// something.
ZORV_API void InstallGuards();

// Calls inCall(), which is somebody else's code, and survives its machine exceptions: accesses to memory that is not
// there, divisions by zero where the processor
// refuses them, invalid instructions. Returns kNoMachineException, or after a machine exception its code:
// the number of the signal on POSIX, the code of the structured exception on Windows.
//
// State      What inCall had under way is left as it stood: no destructor runs, locks stay locked, memory is lost. The
//            thread's floating-point mode is as before the call, and its signal mask as when the exception came.
// C++        Exceptions of inCall pass through.
// Nesting    The innermost guard of the thread that caused the machine exception ends. Without one, or for a
//            signal that somebody sent, the handler that was there before InstallGuards is called, or the
//            default action is taken. A handler that is installed later comes first and has to hand on what is
//            not its own.
// Stack      A stack that overflows ends the process, unless the thread has an alternate one (sigaltstack).
// Threads    Any. The first call installs the handlers; no other allocates, locks or makes a system call.
template <class Call>
unsigned RunGuarded(Call&& inCall)
{
	using Callable = std::remove_reference_t<Call>;
	void const* const context = std::addressof(inCall);
	return detail::RunGuarded(
		[](void* inContext) { (*static_cast<Callable*>(inContext))(); }, const_cast<void*>(context));
}

} // namespace zorvcore::utility::exceptions
