#pragma once

#include "SonaroHost/Otio/TimelineRenderJob.h"

#include <optional>
#include <string>

namespace SonaroCommand
{

// What the render of a timeline came to. inNormalize: what --normalize was given.
std::string SummarizeForPeople(SonaroHost::Otio::TimelineRenderJob const& inJob,
	SonaroHost::Otio::TimelineRenderSummary const& inSummary);
std::string SummarizeForMachines(std::string const& inInput, SonaroHost::Otio::TimelineRenderJob const& inJob,
	SonaroHost::Otio::TimelineRenderSummary const& inSummary, std::optional<double> const& inNormalize);

// The same with all clips, tracks, markers and notes: what --report writes.
std::string ReportForMachines(std::string const& inInput, SonaroHost::Otio::TimelineRenderJob const& inJob,
	SonaroHost::Otio::TimelineRenderSummary const& inSummary, std::optional<double> const& inNormalize);

} // namespace SonaroCommand
