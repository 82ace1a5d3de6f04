#include "Command.h"
#include "Program.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Media/MovieLibraries.h"
#include "Terminal/Console.h"
#include "Terminal/LostMemory.h"
#include "Terminal/OperatingSystem.h"
#include "Terminal/StopSignals.h"

#include <exception>
#include <filesystem>
#include <new>
#include <string>
#include <vector>

namespace
{

using namespace SonaroCommand;

int RunProgram(int inCount, char** inArguments)
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
		SonaroHost::SilenceMovieLibraries();
		return Program().Run({inArguments + 1, inArguments + inCount});
	}
	catch (SonaroHost::HostError const& error)
	{
		PrintError(error.what());
		return GetExitCode(error.GetKind());
	}
	catch (std::filesystem::filesystem_error const& error)
	{
		PrintError(SonaroHost::QuotePath(error.path1()) + ": " + error.code().message());
	}
	catch (std::bad_alloc const&)
	{
		ReportLostMemory();
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
	EndInOrderWithoutMemory();
	HoldStandardStreams();
	AllowManyFiles();
	MakeFailedWritesErrors();
	StopSignals::Watch();
	return RunProgram(inCount, inArguments);
}
