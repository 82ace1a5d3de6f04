#pragma once

#include "SonaroHost/Base/FadeShape.h"
#include "SonaroHost/Base/TimePosition.h"

#include <CLI/CLI.hpp>

#include <optional>
#include <string>
#include <vector>

namespace SonaroCommand
{

// How times are written, for help texts.
inline constexpr char const* kTimesHelp =
	"Times are seconds (12.5), minutes (1:02.5), hours (1:00:02.5) or samples (48000s).";

// What an option was given as a time; throws a HostError that names the option.
SonaroHost::TimePosition ParseTime(std::string const& inOption, std::string const& inText);
// Nothing for an empty text.
std::optional<SonaroHost::TimePosition> ParseTimeIfGiven(
	std::string const& inOption, std::string const& inText);

// The options of every command that lays out a timeline: --media and --fades.
void AddTimelineOptions(CLI::App& ioParser, std::vector<std::string>& outMediaFolders, std::string& outFades);

// The shape that --fades names.
SonaroHost::FadeShape ParseFades(std::string const& inName);

} // namespace SonaroCommand
