#pragma once

#include "SonaroHost/Base/FadeShape.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace SonaroCommand
{

// The options of every command that lays out a timeline: --media and --fades.
void AddTimelineOptions(CLI::App& ioParser, std::vector<std::string>& outMediaFolders, std::string& outFades);

// The shape that --fades names.
SonaroHost::FadeShape ParseFades(std::string const& inName);

} // namespace SonaroCommand
