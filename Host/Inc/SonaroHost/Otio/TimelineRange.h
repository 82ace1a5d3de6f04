#pragma once

#include "SonaroHost/Otio/Model.h"
#include "SonaroHost/Otio/TimelineSequence.h"
#include "SonaroHost/ProgrammeRange.h"

#include <string>

namespace SonaroHost::Otio
{

// The part of a programme that a person asks for, at most to its end.
//
// Marker     The name of one: from its start to its end.
// Times      "START..END" or "START+DURATION", either side as TimePosition reads it, from the programme's start on, or
//            as timecode.
// Timecode   "01:00:10:12", with ";" or "," before the frames where frames are dropped, at the timeline's rate: that of
//            its global start, or else of the first range in it. As START or END it is a label, the programme beginning
//            at the global start.
//
// Throws a HostError for anything else, and for a range without a frame.
ProgrammeRange FindRange(
	std::string const& inText, Timeline const& inTimeline, TimelineSequence const& inSequence);

// Of a marker; without a frame where it has no length or lies beyond the end.
ProgrammeRange FindRange(MarkerRow const& inMarker, TimelineSequence const& inSequence);

} // namespace SonaroHost::Otio
