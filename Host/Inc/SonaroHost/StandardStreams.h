#pragma once

#include <filesystem>
#include <string>

namespace SonaroHost
{

// As a path, "-" is the standard input or output; a file of that name is "./-".
inline bool IsStandardStream(std::filesystem::path const& inPath)
{
	return inPath == "-";
}

// For messages: the path in quotes, or "the standard input".
std::string QuoteInput(std::filesystem::path const& inPath);
// The same of an output.
std::string QuoteOutput(std::filesystem::path const& inPath);

// Where an input can be opened, as often as needed: the path itself; for the standard input a copy without a name in the
// folder for temporary files (TMPDIR), which is made when it is first asked for and lives as long as the process.
// Throws a HostError when there is no room for it.
// Threads: any.
std::filesystem::path GetReadablePath(std::filesystem::path const& inPath);

} // namespace SonaroHost
