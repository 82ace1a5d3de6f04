#pragma once

#include "SonaroHost/Base/Ratio.h"

#include <optional>
#include <string>
#include <string_view>

namespace SonaroHost::Otio
{

// Whether a text has the four fields of a timecode.
bool IsTimecode(std::string_view inText);

// Whether timecode at a rate comes with and without dropped numbers: at 29.97 and 59.94.
bool CanDropFrames(double inRate);

// The seconds from 00:00:00:00 to a timecode at a rate, below 0 where it begins with "-". Nothing for other texts, for minutes and seconds from 60 on,
// for frames that the rate does not have, and for dropped ones: ";" before the frames stands for the counting at 29.97
// and 59.94 that leaves numbers out (SMPTE 12M), so that the label goes with the clock.
std::optional<Ratio> ParseTimecode(std::string_view inText, double inRate);

// The timecode of the frame that is nearest to a time, in seconds, at a rate: "01:00:10:12", and "01:00:10;12" at 29.97
// and 59.94, whose numbers go with the clock. "-" stands before times below 0.
std::string FormatTimecode(Ratio const& inTime, double inRate);

} // namespace SonaroHost::Otio
