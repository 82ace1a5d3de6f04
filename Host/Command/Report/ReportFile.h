#pragma once

#include "Options/RenderOptions.h"

#include <string>

namespace SonaroCommand
{

enum class ReportFolder
{
	kIsThere,
	// The render may make it, as the one of stems.
	kIsMade,
};

// That the file of --report, if there is one, can be written: before the work begins. Throws a HostError.
void CheckReport(RenderOptions const& inOptions, ReportFolder inFolder);

// Makes the folder where it is missing. Throws a HostError.
void WriteReport(RenderOptions const& inOptions, std::string const& inText);

} // namespace SonaroCommand
