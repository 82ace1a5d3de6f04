#pragma once

#include "SonaroHost/Render/TimelineWaveformJob.h"

#include <string>

namespace SonaroCommand
{

struct TimelineWaveformReport
{
	// The paths as the user gave them.
	std::string mInput;
	std::string mOutput;
	bool mIsQuiet = false;
	bool mAsJson = false;
};

// Draws a timeline, reports on it and gives the program's exit code.
int DrawTimeline(
	SonaroHost::TimelineWaveformRequest const& inRequest, TimelineWaveformReport const& inReport);

} // namespace SonaroCommand
