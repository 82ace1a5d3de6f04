#pragma once

#include "SonaroHost/OtioSequence/TimelineSequence.h"
#include "SonaroHost/Render/Programme.h"
#include "SonaroHost/Sequence/FileMedia.h"

namespace SonaroHost::Otio
{

// A timeline that is laid out, as a programme. inMedia outlives it.
Programme MakeProgramme(TimelineSequence const& inSequence, FileMedia const& inMedia);

// Throws the HostError that a render of the timeline would end with before its first block, for those who render
// nothing of it: for no length, for silence, or for a graph that cannot be made.
void CheckCanRender(TimelineSequence const& inSequence, FileMedia const& inMedia);

// Throws a HostError for a programme without a sample, and one of kind kNothingHeard where nothing of it is heard.
void CheckHasSound(TimelineSequence const& inSequence);

} // namespace SonaroHost::Otio
