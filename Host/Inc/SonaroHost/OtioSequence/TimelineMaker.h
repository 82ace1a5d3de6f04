#pragma once

#include "SonaroHost/Media/MediaFinder.h"
#include "SonaroHost/Otio/Model.h"
#include "SonaroHost/OtioSequence/TimelineSequence.h"
#include "SonaroHost/Sequence/FileMedia.h"

namespace SonaroHost::Otio
{

// Docs/OTIO.md says what is rendered how. ioMedia outlives the render: it reports failures to read. Throws a
// HostError for options that make no sense and for timelines that are too long.
// Threads: one at a time for one ioMedia.
TimelineSequence MakeTimelineSequence(Timeline const& inTimeline, MediaFinder const& inFinder,
	FileMedia& ioMedia, TimelineOptions const& inOptions = {});

} // namespace SonaroHost::Otio
