#pragma once

#include <functional>
#include <initializer_list>
#include <string>

namespace SonaroCommand
{

// Where a Caller runs the command, it gets what these print.

// Prints one line on the error output, after the program's name.
void PrintError(std::string const& inMessage);
void PrintWarning(std::string const& inMessage);

// A path for messages: as it was given, or "standard output" for "-".
std::string ShowOutput(std::string const& inPath);

// When one of the outputs is the standard output: from then on the error output gets what PrintResult prints.
void MakeRoomForOutputs(std::initializer_list<std::string> inPaths);

// Writes lines to the standard output; what could command a terminal is written out, and JSON means the same then.
// Throws a HostError when that fails, for instance on a full disk.
void PrintResult(std::string const& inText);

// Does what comes after a command's output has got its name, such as its report and its summary. When that fails, the
// HostError also says that the output stays. An empty inOutput is none.
void FinishAfter(std::string const& inOutput, std::function<void()> const& inRest);

} // namespace SonaroCommand
