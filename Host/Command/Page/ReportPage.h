#pragma once

#include "Report/Json.h"
#include "SonaroHost/Metering/LoudnessPlot.h"

#include <string>
#include <utility>
#include <vector>

namespace SonaroCommand::Page
{

// What a page shows besides the report's own facts.
struct ReportPictures
{
	// An SVG of the waveform and what it shows; or the reason why there is none.
	std::string mWaveform;
	std::string mWaveformText;
	// Loudness over time: of the mix or the files, and of tracks.
	std::vector<SonaroHost::PlottedLoudness> mMixes;
	std::vector<SonaroHost::PlottedLoudness> mTracks;
	// What was asked for, by name and value.
	std::vector<std::pair<std::string, std::string>> mSettings;
};

// A report of a render as one page of HTML that needs nothing else, neither scripts nor fonts nor a network. Texts from
// timelines and file names are escaped.
std::string MakeReportPage(Json const& inReport, ReportPictures const& inPictures);

} // namespace SonaroCommand::Page
