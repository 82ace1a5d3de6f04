#pragma once

#include "SonaroHost/Base/HostError.h"

#include <filesystem>
#include <string>

namespace SonaroHost
{

// The path "-" is the standard input or output; a file of that name is "./-".
inline bool IsStandardStream(std::filesystem::path const& inPath)
{
	return inPath == "-";
}

// What messages call a path: itself in quotes; for the standard streams "the standard input" and "the standard output".
std::string QuoteInput(std::filesystem::path const& inPath);
std::string QuoteOutput(std::filesystem::path const& inPath);

// The parts of an error about an input; the standard input is called by that name.
HostError::Parts MakeInputParts(
	std::filesystem::path const& inPath, std::string const& inReason, std::string const& inRemedy = {});
// Throws a HostError of the kind kInput with those parts.
[[noreturn]] void RefuseInput(
	std::filesystem::path const& inPath, std::string const& inReason, std::string const& inRemedy = {});

// Where an input can be opened, as often as needed: the path itself; for the standard input a copy without a name in the
// folder for temporary files (TMPDIR), which is made when it is first asked for and lives as long as the process.
// Throws a HostError when there is no room for it.
// Threads: any.
std::filesystem::path GetReadablePath(std::filesystem::path const& inPath);

} // namespace SonaroHost
