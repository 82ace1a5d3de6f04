#include "ProcessEnd.h"

#include <initializer_list>

#include <windows.h>

namespace zorvcore::threads
{

namespace
{

void (*sCall)() = nullptr;

template <class Function>
Function FindFunction(wchar_t const* inLibrary, char const* inName)
{
	HMODULE const library = GetModuleHandleW(inLibrary);
	return library ? reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, inName)))
				   : nullptr;
}

// Programs may also end without their runtime, which leaves no thread that could do what is waited for.
void __cdecl CallWhileThreadsRun()
{
	using Query = BOOLEAN(WINAPI*)();
	auto const isEnding = FindFunction<Query>(L"ntdll.dll", "RtlDllShutdownInProgress");
	if (!isEnding || !isEnding())
	{
		sCall();
	}
}

} // namespace

// Statics of libraries go after the system has ended all other threads, and what a library registers by atexit is called
// then, too. Only the functions that the C runtime keeps for the whole process are called before that.
void CallAtProcessEnd(void (*inCall)())
{
	sCall = inCall;
	// The library stays for as long as the process lives.
	HMODULE pinned = nullptr;
	GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
		reinterpret_cast<LPCWSTR>(&CallWhileThreadsRun), &pinned);
	// A process may have both runtimes, and that of the program comes first.
	using Register = int(__cdecl*)(void(__cdecl*)());
	for (auto const add : {FindFunction<Register>(L"ucrtbase.dll", "_crt_atexit"),
			 FindFunction<Register>(L"msvcrt.dll", "atexit")})
	{
		if (add)
		{
			add(&CallWhileThreadsRun);
		}
	}
}

} // namespace zorvcore::threads
