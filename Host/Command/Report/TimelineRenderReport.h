#pragma once

#include "Json.h"
#include "SonaroHost/Render/TimelineRenderJob.h"

#include <string>

namespace SonaroCommand
{

// What the render of a timeline came to. inLevels: those that were asked for. inRefusal: why the render is refused and
// writes nothing else; empty for one that is not.
std::string SummarizeForPeople(
	SonaroHost::Otio::TimelineRenderJob const& inJob, SonaroHost::RenderSummary const& inSummary);
std::string SummarizeForMachines(std::string const& inInput, SonaroHost::Otio::TimelineRenderJob const& inJob,
	SonaroHost::RenderSummary const& inSummary, SonaroHost::OutputLevels const& inLevels,
	std::string const& inRefusal = {});

// The same with all clips, tracks, markers and notes: what --report writes.
Json MakeReport(std::string const& inInput, SonaroHost::Otio::TimelineRenderJob const& inJob,
	SonaroHost::RenderSummary const& inSummary, SonaroHost::OutputLevels const& inLevels,
	std::string const& inRefusal = {});

} // namespace SonaroCommand
