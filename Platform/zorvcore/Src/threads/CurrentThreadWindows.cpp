#include "zorvcore/threads/CurrentThread.h"

#include <string>

#include <windows.h>

namespace zorvcore::threads
{

namespace
{

// Libraries are loaded by the thread that a process begins with, unless a program loads them later.
DWORD const sLoadingThread = GetCurrentThreadId();

// What came with Windows 10 is not in the headers of all compilers.
template <class Function>
Function FindFunction(char const* inName)
{
	HMODULE const module = GetModuleHandleW(L"kernel32.dll");
	return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, inName)));
}

int GetSystemPriority(ThreadPriority inPriority)
{
	int const steps = static_cast<int>(inPriority) - static_cast<int>(ThreadPriority::kNormal);
	return steps < -1    ? THREAD_PRIORITY_LOWEST
		   : steps == -1 ? THREAD_PRIORITY_BELOW_NORMAL
		   : steps == 0  ? THREAD_PRIORITY_NORMAL
		   : steps == 1  ? THREAD_PRIORITY_ABOVE_NORMAL
						 : THREAD_PRIORITY_HIGHEST;
}

} // namespace

bool CurrentThreadIsMainThread() noexcept
{
	return GetCurrentThreadId() == sLoadingThread;
}

void SetCurrentThreadName(char const* inName) noexcept
{
	// A name is for debuggers: what is not ASCII becomes a question mark.
	constexpr std::size_t kMaxLength = 15;
	wchar_t name[kMaxLength + 1] = {};
	for (std::size_t i = 0; i < kMaxLength && inName[i] != '\0'; ++i)
	{
		bool const isPlain = static_cast<unsigned char>(inName[i]) < 0x80;
		name[i] = isPlain ? static_cast<wchar_t>(inName[i]) : L'?';
	}
	using Setter = HRESULT(WINAPI*)(HANDLE, PCWSTR);
	static auto const sSet = FindFunction<Setter>("SetThreadDescription");
	if (sSet)
	{
		sSet(GetCurrentThread(), name);
	}
}

void SetCurrentThreadPriority(ThreadPriority inPriority) noexcept
{
	SetThreadPriority(GetCurrentThread(), GetSystemPriority(inPriority));
}

bool SetCurrentThreadRealtime(int /*inPriority*/) noexcept
{
	// One level above all others of processes that are not real-time as a whole; there are no finer ones.
	return SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_TIME_CRITICAL) != 0;
}

} // namespace zorvcore::threads
