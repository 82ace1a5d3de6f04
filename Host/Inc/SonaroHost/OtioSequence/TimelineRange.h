#pragma once

#include "SonaroHost/Base/ProgrammeRange.h"
#include "SonaroHost/Otio/Model.h"
#include "SonaroHost/OtioSequence/TimelineSequence.h"

#include <string>
#include <vector>

namespace SonaroHost::Otio
{

// A range of a programme, as it was found.
struct FoundRange
{
	ProgrammeRange mRange;
	// Remarks on how it was understood.
	std::vector<Note> mNotes;
};

// The part of a programme that a person asks for, at most to its end; what lies beyond is cut off, with a remark.
//
// Marker     The name of one: what FindNamedRange says. It goes before all else that the text could mean.
// Times      "START..END", of which either may be left out, or "START+DURATION". Each is what TimePosition reads, from
//            the programme's start on, or timecode; START and END may be the name of a marker and mean where it
//            starts. A time goes before a name, with a remark. Where there are several "..", the first one counts that
//            has a time, a name or nothing on either side, and after them the first such "+".
// Timecode   "01:00:10:12", with ";" or "," before the frames where frames are dropped, at the timeline's rate: that of
//            its global start, or else of the first range in it. As START or END it is a label, the programme beginning
//            at the global start.
//
// Where several markers have one name, the first one counts, and as END the first one that starts after START.
// Throws a HostError for anything else, and for a range without a frame.
FoundRange FindRange(
	std::string const& inText, Timeline const& inTimeline, TimelineSequence const& inSequence);

// The range of a marker; without a frame where it has no length or lies beyond the end.
ProgrammeRange FindRange(MarkerRow const& inMarker, TimelineSequence const& inSequence);

// What a marker names: its own range, or, of a point, all up to the next marker that starts later, or to the end.
// Without a frame where it lies at the end.
ProgrammeRange FindNamedRange(MarkerRow const& inMarker, TimelineSequence const& inSequence);

} // namespace SonaroHost::Otio
