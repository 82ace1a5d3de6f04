#pragma once

#include "Options/RenderOptions.h"
#include "Terminal/Caller.h"

#include <CLI/CLI.hpp>

#include <string>

namespace SonaroCommand
{

// What "sonaro render" does with a programme of its Caller. Throws a HostError.
void RenderCalledProgramme(CLI::App& ioParser, RenderOptions const& inOptions, std::string const& inInput,
	CalledProgramme const& inProgramme);

} // namespace SonaroCommand
