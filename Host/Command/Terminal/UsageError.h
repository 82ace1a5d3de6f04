#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace SonaroCommand
{

// What is wrong with a command line that could not be parsed, in one line that says where to read on. An option or a
// command that there is not comes first, with the one that is written most alike: "there is no option '--reprot'; did
// you mean --report?".
std::string DescribeUsageError(CLI::App const& inProgram, CLI::ParseError const& inError);

// The same for the options of a parser without commands.
std::string DescribeOptionError(CLI::App const& inParser, CLI::ParseError const& inError);

} // namespace SonaroCommand
