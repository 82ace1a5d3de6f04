#pragma once

#include "Report/Json.h"
#include "SonaroHost/Serve/ServedTimeline.h"

#include <string>

namespace SonaroCommand::Serve
{

// What a page has to know of a timeline: the programme, the outermost tracks with their numbers, clips, markers, missing
// media and notes, as reports have them.
Json DescribeTimeline(SonaroHost::Serve::ServedTimeline& ioTimeline);

// The timeline's file with the comments as markers of its stack. Throws a HostError for a bundle in one file, and for a
// file that is no strict JSON.
std::string MakeTimelineWithMarkers(
	SonaroHost::Serve::ServedTimeline const& inTimeline, Json const& inComments);

} // namespace SonaroCommand::Serve
