#pragma once

#include "Json.h"
#include "SonaroHost/Render/ClipRenderJob.h"

#include <string>
#include <vector>

namespace SonaroCommand
{

// What a render came to. The names of the files are those that the user gave.
std::string SummarizeForPeople(std::vector<std::string> const& inInputs, std::string const& inOutput,
	SonaroHost::ClipRenderJob const& inJob, SonaroHost::RenderSummary const& inSummary);
std::string SummarizeForMachines(std::vector<std::string> const& inInputs, std::string const& inOutput,
	SonaroHost::ClipRenderJob const& inJob, SonaroHost::RenderSummary const& inSummary);

// What --report writes, in the shape that it has for timelines. inLevels: those that were asked for.
Json MakeReport(std::vector<std::string> const& inInputs, SonaroHost::ClipRenderJob const& inJob,
	SonaroHost::RenderSummary const& inSummary, SonaroHost::OutputLevels const& inLevels);

} // namespace SonaroCommand
