#pragma once

#include "SonaroHost/Otio/Model.h"
#include "SonaroHost/Otio/Note.h"

#include <vector>

namespace SonaroHost::Otio
{

// Fills in the clip and the track that a place of the timeline lies in, for people who know these by their names, for
// each note that has neither.
void NamePlaces(Timeline const& inTimeline, std::vector<Note>& ioNotes);

} // namespace SonaroHost::Otio
