#pragma once

#include "ReportPage.h"
#include "SonaroHost/Render/RenderSummary.h"
#include "SonaroHost/Render/TimelineWaveformJob.h"

#include <CLI/CLI.hpp>

#include <optional>
#include <string>
#include <vector>

namespace SonaroCommand::Page
{

// The plots of a render whose readings have their series, and the options that its parser was given. inTarget: the
// loudness that it is brought to. inTracks: the name of each track of the summary.
ReportPictures MakePictures(CLI::App const& inParser, std::optional<double> const& inTarget,
	SonaroHost::RenderSummary const& inSummary, std::vector<std::string> const& inTracks);

// These add a waveform: of a sound file that was written, or of a whole timeline, which is rendered once more. Where
// there can be none, the reason takes its place. They end the process when it is asked to end.
void AddFileWaveform(std::string const& inPath, bool inIsQuiet, ReportPictures& ioPictures);
// inRequest: without an output. inMissing: media that were missing when the timeline was rendered.
void AddTimelineWaveform(SonaroHost::TimelineWaveformRequest inRequest,
	std::vector<SonaroHost::Otio::MissingMedia> const& inMissing, bool inIsQuiet, ReportPictures& ioPictures);

} // namespace SonaroCommand::Page
