#include "OperatingSystem.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <thread>

#include <fcntl.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace SonaroCommand
{

bool IsErrorOutputTerminal()
{
	return isatty(STDERR_FILENO) != 0;
}

bool AreStandardStreamsTerminal()
{
	return isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0;
}

int GetTerminalWidth()
{
	winsize size{};
	bool const isKnown = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
	return isKnown ? size.ws_col : 80;
}

unsigned CountUsableCores()
{
	cpu_set_t cores;
	CPU_ZERO(&cores);
	if (sched_getaffinity(0, sizeof cores, &cores) == 0)
	{
		return static_cast<unsigned>(std::max(CPU_COUNT(&cores), 1));
	}
	// There are more of them than a set holds.
	return std::max(std::thread::hardware_concurrency(), 1u);
}

void AllowManyFiles()
{
	rlimit limit{};
	if (getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur < limit.rlim_max)
	{
		limit.rlim_cur = limit.rlim_max;
		static_cast<void>(setrlimit(RLIMIT_NOFILE, &limit));
	}
}

void HoldStandardStreams()
{
	for (int const stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
	{
		if (fcntl(stream, F_GETFD) == -1 && errno == EBADF)
		{
			// Open the wrong way round, so that using it fails. It gets the lowest number that is free, which is this.
			static_cast<void>(open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY));
		}
	}
}

void MakeFailedWritesErrors()
{
	std::signal(SIGXFSZ, SIG_IGN);
	std::signal(SIGPIPE, SIG_IGN);
}

} // namespace SonaroCommand
