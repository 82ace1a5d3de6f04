#include "Command.h"
#include "Console.h"
#include "GraphCommand.h"
#include "InfoCommand.h"
#include "OperatingSystem.h"
#include "RenderCommand.h"
#include "SonaroHost/HostError.h"
#include "StopSignals.h"
#include "WaveformCommand.h"

#include <exception>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace
{

using namespace SonaroCommand;

// Wrong usage ends in one line that says where to read on.
int RefuseUsage(CLI::App const& inProgram, CLI::ParseError const& inError)
{
	std::string name = "sonaro";
	std::string reason = inError.what();
	auto const chosen = inProgram.get_subcommands();
	if (!chosen.empty())
	{
		name += " " + chosen.front()->get_name();
	}
	else if (inError.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError))
	{
		auto const words = inProgram.remaining();
		bool const isOption = !words.empty() && words.front().starts_with('-');
		reason = words.empty() ? "give a command"
							   : std::string("there is no ") + (isOption ? "option '" : "command '") +
									 words.front() + "'";
	}
	PrintError(reason + " (see " + name + " --help)");
	return kExitUsage;
}

int RunCommand(Command& ioCommand)
{
	using SonaroHost::HostError;
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
		return ioCommand.Run();
	}
	catch (HostError const& error)
	{
		PrintError(error.what());
		return error.GetKind() == HostError::Kind::eRequest ? kExitUsage : kExitFailure;
	}
	catch (std::bad_alloc const&)
	{
		PrintError("there is not enough memory");
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
	MakeFileSizeLimitAnError();
	StopSignals::Watch();
	CLI::App program("Renders sound, exact to the sample.", "sonaro");
	program.set_version_flag("--version", "sonaro " SONARO_VERSION);
	program.require_subcommand(1);
	program.footer("\"sonaro COMMAND --help\" tells more about a command.\n"
				   "The program ends with 0, with 1 when the input or the output failed, with 2 for wrong "
				   "usage, and with 3\n"
				   "when a timeline was rendered with silence for media that are missing.");

	std::vector<std::unique_ptr<Command>> commands;
	commands.push_back(std::make_unique<RenderCommand>(program));
	commands.push_back(std::make_unique<WaveformCommand>(program));
	commands.push_back(std::make_unique<InfoCommand>(program));
	commands.push_back(std::make_unique<GraphCommand>(program));
	try
	{
		program.parse(inCount, inArguments);
	}
	catch (CLI::Success const& request)
	{
		// Help or the version.
		return program.exit(request);
	}
	catch (CLI::ParseError const& error)
	{
		return RefuseUsage(program, error);
	}
	for (auto const& command : commands)
	{
		if (command->IsChosen())
		{
			return RunCommand(*command);
		}
	}
	return kExitUsage;
}
