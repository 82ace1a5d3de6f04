#pragma once

#include "SonaroHost/Picture/TimelinePicture.h"

#include <string>
#include <vector>

namespace SonaroHost
{

struct RulerTick
{
	// In seconds from the start of the programme.
	double mTime = 0.0;
	// Empty for one between those with labels.
	std::string mLabel;
};

// Ticks at round values of timecode or of seconds, so far apart that their labels, from each tick to the right, leave a
// gap between them. inPixels: the width of the programme, above 0. inSize: of the labels, in pixels.
std::vector<RulerTick> MakeRulerTicks(TimelinePicture const& inPicture, double inPixels, double inSize);

// A time as the ruler has it, in timecode or in seconds to the millisecond.
std::string FormatRulerTime(TimelinePicture const& inPicture, double inTime);

} // namespace SonaroHost
