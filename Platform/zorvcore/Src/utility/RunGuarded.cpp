#include "zorvcore/utility/RunGuarded.h"

#include "FloatMode.h"

#include <csetjmp>
#include <csignal>
#include <cstddef>
#include <iterator>
#include <pthread.h>

namespace zorvcore::utility::exceptions
{

namespace
{

// One guard that is active, on the stack of its thread.
struct Guard
{
	FloatMode mFloatMode;
	// At the machine exception. To save it at each call would be a system call.
	sigset_t mSignalMask;
	sigjmp_buf mJump;
};

// The handler reads it, which must not allocate the thread's storage of a library that was loaded late.
[[gnu::tls_model("initial-exec")]] constinit thread_local Guard* sInnermost = nullptr;

#ifdef __aarch64__
// There, compilers end what cannot go on by a breakpoint.
constexpr int kSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP};
#else
constexpr int kSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL};
#endif

// What handled the signals before, in the order of kSignals. Written before its handler is replaced.
struct sigaction sFormer[std::size(kSignals)];

struct sigaction const& GetFormer(int inSignal)
{
	std::size_t index = 0;
	while (kSignals[index] != inSignal)
	{
		++index;
	}
	return sFormer[index];
}

void RestoreDefault(int inSignal)
{
	struct sigaction action = {};
	action.sa_handler = SIG_DFL;
	sigaction(inSignal, &action, nullptr);
}

void HandOn(int inSignal, siginfo_t* inInfo, void* inContext)
{
	struct sigaction const& former = GetFormer(inSignal);
	if ((static_cast<unsigned>(former.sa_flags) & SA_RESETHAND) != 0)
	{
		RestoreDefault(inSignal);
	}
	if ((former.sa_flags & SA_SIGINFO) != 0)
	{
		former.sa_sigaction(inSignal, inInfo, inContext);
	}
	else if (former.sa_handler != SIG_DFL && former.sa_handler != SIG_IGN)
	{
		former.sa_handler(inSignal);
	}
	else if (inInfo->si_code > 0)
	{
		// The processor's comes again as soon as this returns; no process may ignore it.
		RestoreDefault(inSignal);
	}
	else if (former.sa_handler == SIG_DFL)
	{
		RestoreDefault(inSignal);
		raise(inSignal);
	}
}

void HandleSignal(int inSignal, siginfo_t* inInfo, void* inContext)
{
	if (sInnermost && inInfo->si_code > 0)
	{
		sInnermost->mSignalMask = static_cast<ucontext_t const*>(inContext)->uc_sigmask;
		siglongjmp(sInnermost->mJump, inSignal);
	}
	HandOn(inSignal, inInfo, inContext);
}

bool InstallHandlers()
{
	for (std::size_t i = 0; i < std::size(kSignals); ++i)
	{
		sigaction(kSignals[i], nullptr, &sFormer[i]);
		struct sigaction action = {};
		action.sa_sigaction = &HandleSignal;
		action.sa_mask = sFormer[i].sa_mask;
		action.sa_flags = SA_ONSTACK | SA_SIGINFO | (sFormer[i].sa_flags & (SA_NODEFER | SA_RESTART));
		sigaction(kSignals[i], &action, nullptr);
	}
	return true;
}

// Apart from Activation: a frame that a signal returns to has no object with a destructor.
[[gnu::noinline]] unsigned CallGuarded(Guard& ioGuard, void (*inCall)(void*), void* inContext)
{
	int const signal = sigsetjmp(ioGuard.mJump, 0);
	if (signal == 0)
	{
		inCall(inContext);
		return kNoMachineException;
	}
	ioGuard.mFloatMode.Restore();
	pthread_sigmask(SIG_SETMASK, &ioGuard.mSignalMask, nullptr);
	return static_cast<unsigned>(signal);
}

// Makes a guard the innermost one of the thread.
class Activation
{
public:
	explicit Activation(Guard& ioGuard)
		: mOuter(sInnermost)
	{
		ioGuard.mFloatMode.Save();
		sInnermost = &ioGuard;
	}
	~Activation() { sInnermost = mOuter; }
	Activation(Activation const&) = delete;
	Activation& operator=(Activation const&) = delete;

private:
	Guard* mOuter;
};

} // namespace

void InstallGuards()
{
	static bool const sAreInstalled = InstallHandlers();
	static_cast<void>(sAreInstalled);
}

unsigned detail::RunGuarded(void (*inCall)(void*), void* inContext)
{
	InstallGuards();
	Guard guard;
	Activation const activation(guard);
	return CallGuarded(guard, inCall, inContext);
}

} // namespace zorvcore::utility::exceptions
