#pragma once

#include <string>

namespace SonaroCommand
{

// One line on the error output, behind the program's name.
void PrintError(std::string const& inMessage);
void PrintWarning(std::string const& inMessage);

// Writes lines to the standard output; what could command a terminal is written out, and JSON means the same then.
// Throws a HostError when that fails, for instance on a full disk.
void PrintResult(std::string const& inText);

} // namespace SonaroCommand
