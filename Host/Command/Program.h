#pragma once

#include "Command.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>
#include <vector>

namespace SonaroCommand
{

// The parser of the command line with all commands; one for each run.
class Program
{
public:
	Program();
	Program(Program const&) = delete;
	Program& operator=(Program const&) = delete;

	// Parses the arguments, without the program's name, and does what they ask for. Returns the exit code. Throws a HostError
	// for whatever a person can act on, wrong usage among it; see Caller for commands within another process.
	int Run(std::vector<std::string> inArguments);

private:
	void AddFeaturesFlag();
	// Throws a CLI::ParseError.
	void Parse(std::vector<std::string> inArguments);

	CLI::App mParser;
	bool mListsFeatures = false;
	bool mIsJson = false;
	std::vector<std::unique_ptr<Command>> mCommands;
};

} // namespace SonaroCommand
