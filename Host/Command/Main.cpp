#include "Command.h"
#include "Program.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Media/MovieLibraries.h"
#include "Terminal/Console.h"
#include "Terminal/OperatingSystem.h"
#include "Terminal/StopSignals.h"

#include <exception>
#include <new>
#include <string>
#include <vector>

namespace
{

using namespace SonaroCommand;

int RunProgram(std::vector<std::string> const& inArguments)
{
	// Whatever a command that was asked to stop ends with, it ends by the signal.
	struct SignalFirst
	{
		~SignalFirst()
		{
			if (StopSignals::GetToken().stop_requested())
			{
				StopSignals::EndProcess();
			}
		}
	} const signalFirst;
	try
	{
		return Program().Run(inArguments);
	}
	catch (SonaroHost::HostError const& error)
	{
		PrintError(error.what());
		return GetExitCode(error.GetKind());
	}
	catch (std::bad_alloc const&)
	{
		PrintError("not enough memory");
	}
	catch (std::exception const& error)
	{
		PrintError(error.what());
	}
	return kExitFailure;
}

} // namespace

int main(int inCount, char** inArguments)
{
	HoldStandardStreams();
	AllowManyFiles();
	MakeFailedWritesErrors();
	StopSignals::Watch();
	SonaroHost::SilenceMovieLibraries();
	return RunProgram({inArguments + 1, inArguments + inCount});
}
