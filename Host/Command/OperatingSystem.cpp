#include "OperatingSystem.h"

#include <csignal>

#include <sys/ioctl.h>
#include <unistd.h>

namespace SonaroCommand
{

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

void MakeFailedWritesErrors()
{
	std::signal(SIGXFSZ, SIG_IGN);
	std::signal(SIGPIPE, SIG_IGN);
}

} // namespace SonaroCommand
