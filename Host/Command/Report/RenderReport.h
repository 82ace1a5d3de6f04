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

// That it is refused and writes nothing but a report.
std::string DescribeRefusalForMachines(std::vector<std::string> const& inInputs, std::string const& inOutput,
	SonaroHost::ClipRenderJob const& inJob, std::string const& inRefusal);

// What --report writes, in the shape that it has for timelines. inLevels: those that were asked for. inRefusal: why the
// render is refused and writes nothing else; empty for one that is not.
Json MakeReport(std::vector<std::string> const& inInputs, SonaroHost::ClipRenderJob const& inJob,
	SonaroHost::RenderSummary const& inSummary, SonaroHost::OutputLevels const& inLevels,
	std::string const& inRefusal = {});

} // namespace SonaroCommand
