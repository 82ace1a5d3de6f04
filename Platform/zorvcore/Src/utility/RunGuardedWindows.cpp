#include "zorvcore/utility/RunGuarded.h"

#include <windows.h>

namespace zorvcore::utility::exceptions
{

namespace
{

// C++ exceptions, breakpoints and overflows of the stack are not for a guard.
bool IsMachineException(unsigned long inCode)
{
	switch (inCode)
	{
	case EXCEPTION_ACCESS_VIOLATION:
	case EXCEPTION_ARRAY_BOUNDS_EXCEEDED:
	case EXCEPTION_DATATYPE_MISALIGNMENT:
	case EXCEPTION_FLT_DENORMAL_OPERAND:
	case EXCEPTION_FLT_DIVIDE_BY_ZERO:
	case EXCEPTION_FLT_INEXACT_RESULT:
	case EXCEPTION_FLT_INVALID_OPERATION:
	case EXCEPTION_FLT_OVERFLOW:
	case EXCEPTION_FLT_UNDERFLOW:
	case EXCEPTION_ILLEGAL_INSTRUCTION:
	case EXCEPTION_INT_DIVIDE_BY_ZERO:
	case EXCEPTION_INT_OVERFLOW:
	case EXCEPTION_IN_PAGE_ERROR:
	case EXCEPTION_PRIV_INSTRUCTION:
		return true;
	default:
		return false;
	}
}

} // namespace

} // namespace zorvcore::utility::exceptions

#ifdef _MSC_VER

namespace zorvcore::utility::exceptions
{

void InstallGuards()
{
}

unsigned detail::RunGuarded(void (*inCall)(void*), void* inContext)
{
	unsigned long code = kNoMachineException;
	__try
	{
		inCall(inContext);
	}
	__except (
		IsMachineException(code = GetExceptionCode()) ? EXCEPTION_EXECUTE_HANDLER : EXCEPTION_CONTINUE_SEARCH)
	{
		return code;
	}
	return kNoMachineException;
}

} // namespace zorvcore::utility::exceptions

#else

#include "FloatMode.h"

// The compiler has no blocks for structured exceptions. A vectored handler, which the system calls on the thread and
// before all blocks, sends the thread to where the guard began.
namespace zorvcore::utility::exceptions
{

namespace
{

// One guard that is active, on the stack of its thread.
struct Guard
{
	FloatMode mFloatMode;
	// Of the machine exception.
	unsigned mCode = kNoMachineException;
	void* mJump[5];
};

// Where threads keep their innermost guard. The handler reads it, which must not allocate anything, as variables of
// threads do here.
DWORD GetSlot()
{
	static DWORD const sSlot = TlsAlloc();
	return sSlot;
}

// Reading it changes the thread's last error, which belongs to what was interrupted.
Guard* FindInnermost()
{
	DWORD const error = GetLastError();
	auto* const guard = static_cast<Guard*>(TlsGetValue(GetSlot()));
	SetLastError(error);
	return guard;
}

// Where a thread goes on after a machine exception.
[[noreturn, gnu::noinline]] void Return(Guard* inGuard)
{
	__builtin_longjmp(inGuard->mJump, 1);
}

LONG CALLBACK HandleException(EXCEPTION_POINTERS* inPointers)
{
	unsigned long const code = inPointers->ExceptionRecord->ExceptionCode;
	Guard* const guard = IsMachineException(code) ? FindInnermost() : nullptr;
	if (!guard)
	{
		return EXCEPTION_CONTINUE_SEARCH;
	}
	guard->mCode = static_cast<unsigned>(code);
	// As if the instruction had been a call of Return: with room for the registers of its arguments, and the stack where
	// it is after a call.
	constexpr DWORD64 kRoom = 64;
	CONTEXT& context = *inPointers->ContextRecord;
	context.Rsp = (context.Rsp & ~DWORD64{15}) - kRoom - sizeof(void*);
	context.Rcx = reinterpret_cast<DWORD64>(guard);
	context.Rip = reinterpret_cast<DWORD64>(&Return);
	return EXCEPTION_CONTINUE_EXECUTION;
}

// Apart from Activation: a frame that a machine exception returns to has no object with a destructor.
[[gnu::noinline]] unsigned CallGuarded(Guard& ioGuard, void (*inCall)(void*), void* inContext)
{
	if (__builtin_setjmp(ioGuard.mJump) == 0)
	{
		inCall(inContext);
		return kNoMachineException;
	}
	ioGuard.mFloatMode.Restore();
	return ioGuard.mCode;
}

// Makes a guard the innermost one of the thread.
class Activation
{
public:
	explicit Activation(Guard& ioGuard)
		: mOuter(FindInnermost())
	{
		ioGuard.mFloatMode.Save();
		TlsSetValue(GetSlot(), &ioGuard);
	}
	~Activation() { TlsSetValue(GetSlot(), mOuter); }
	Activation(Activation const&) = delete;
	Activation& operator=(Activation const&) = delete;

private:
	Guard* mOuter;
};

} // namespace

void InstallGuards()
{
	constexpr ULONG kFirst = 1;
	static void* const sHandler = (GetSlot(), AddVectoredExceptionHandler(kFirst, &HandleException));
	static_cast<void>(sHandler);
}

unsigned detail::RunGuarded(void (*inCall)(void*), void* inContext)
{
	InstallGuards();
	Guard guard;
	Activation const activation(guard);
	return CallGuarded(guard, inCall, inContext);
}

} // namespace zorvcore::utility::exceptions

#endif
