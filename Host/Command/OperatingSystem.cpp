#include "OperatingSystem.h"

#include <csignal>
#include <cstdlib>

#include <sys/ioctl.h>
#include <unistd.h>

namespace SonaroCommand
{

namespace
{

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

// The first of kSignals that came; written by the handler.
volatile std::sig_atomic_t sSignal = 0;

extern "C" void NoteSignal(int inSignal)
{
	if (sSignal == 0)
	{
		sSignal = inSignal;
	}
}

void SetHandler(int inSignal, void (*inHandler)(int))
{
	struct sigaction action = {};
	action.sa_handler = inHandler;
	sigemptyset(&action.sa_mask);
	action.sa_flags = SA_RESTART;
	sigaction(inSignal, &action, nullptr);
}

// Replaces one handler by another and leaves signals alone that have neither.
void ReplaceHandlers(void (*inOld)(int), void (*inNew)(int))
{
	for (int const signal : kSignals)
	{
		struct sigaction present = {};
		sigaction(signal, nullptr, &present);
		if (present.sa_handler == inOld)
		{
			SetHandler(signal, inNew);
		}
	}
}

} // namespace

bool IsErrorOutputTerminal()
{
	return isatty(STDERR_FILENO) != 0;
}

int GetTerminalWidth()
{
	winsize size{};
	bool const isKnown = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
	return isKnown ? size.ws_col : 80;
}

void MakeFileSizeLimitAnError()
{
	SetHandler(SIGXFSZ, SIG_IGN);
}

InterruptGuard::InterruptGuard()
{
	sSignal = 0;
	ReplaceHandlers(SIG_DFL, NoteSignal);
}

InterruptGuard::~InterruptGuard()
{
	ReplaceHandlers(NoteSignal, SIG_DFL);
}

bool InterruptGuard::IsInterrupted() const
{
	return sSignal != 0;
}

void InterruptGuard::EndProcess()
{
	int const signal = sSignal != 0 ? sSignal : SIGTERM;
	SetHandler(signal, SIG_DFL);
	raise(signal);
	// Not reached unless the signal is blocked; what shells show for it.
	std::_Exit(128 + signal);
}

} // namespace SonaroCommand
