#include "StopSignals.h"

#include "Caller.h"
#include "SonaroHost/Files/Temporary.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <thread>

namespace SonaroCommand
{

namespace
{

// The time that jobs have to clear up by themselves.
constexpr timespec kPatience{0, 500'000'000};

std::atomic<int> sSignal = 0;

// Never destroyed, since the watching thread outlives main.
std::stop_source& GetSource()
{
	static auto* const sSource = new std::stop_source;
	return *sSource;
}

sigset_t FindSignals()
{
	sigset_t set;
	sigemptyset(&set);
	for (int const signal : {SIGINT, SIGTERM, SIGHUP})
	{
		struct sigaction present = {};
		sigaction(signal, nullptr, &present);
		// A blocked signal would be waited for even if it is ignored.
		if (present.sa_handler == SIG_DFL)
		{
			sigaddset(&set, signal);
		}
	}
	return set;
}

[[noreturn]] void EndBy(int inSignal)
{
	sigset_t set;
	sigemptyset(&set);
	sigaddset(&set, inSignal);
	pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
	raise(inSignal);
	// This is not reached; it is the code that shells show for the signal.
	std::_Exit(128 + inSignal);
}

void WaitForSignals(sigset_t const& inSet)
{
	int signal = 0;
	while (sigwait(&inSet, &signal) != 0)
	{
	}
	sSignal = signal;
	GetSource().request_stop();
	// Waits for another signal or the end of the patience, whichever comes first.
	sigtimedwait(&inSet, nullptr, &kPatience);
	SonaroHost::Temporary::RemoveAll();
	EndBy(signal);
}

} // namespace

void StopSignals::Watch()
{
	sigset_t const set = FindSignals();
	// Every thread that is made from here on inherits this.
	pthread_sigmask(SIG_BLOCK, &set, nullptr);
	try
	{
		// What the thread must not fail to make.
		GetSource();
		std::thread([set] { WaitForSignals(set); }).detach();
	}
	catch (std::exception const&)
	{
		// Without room for a thread, a signal ends the process at once.
		pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
	}
}

std::stop_token StopSignals::GetToken()
{
	if (Caller* const caller = FindCaller())
	{
		return caller->GetStop();
	}
	return GetSource().get_token();
}

void StopSignals::EndProcess()
{
	if (FindCaller())
	{
		throw CommandStopped();
	}
	// What the callers of this still have: they do not come to their ends.
	SonaroHost::Temporary::RemoveAll();
	EndBy(sSignal);
}

} // namespace SonaroCommand
