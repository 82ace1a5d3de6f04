#pragma once

#include "Json.h"
#include "SonaroHost/Otio/Note.h"
#include "SonaroHost/Otio/TimelineReport.h"

#include <cstddef>
#include <vector>

namespace SonaroCommand
{

// Warns of levels that are not read, of missing media, and of what was guessed or ignored, in this order; beyond 20
// lines they are only counted.
void WarnOfNotes(std::vector<SonaroHost::Otio::MissingMedia> const& inMissing,
	std::vector<SonaroHost::Otio::Note> const& inNotes);

Json ListMissing(std::vector<SonaroHost::Otio::MissingMedia> const& inMissing);
// Levels that are not read stand first.
Json ListNotes(std::vector<SonaroHost::Otio::Note> const& inNotes);

// At how many places levels are not read.
std::size_t CountUnreadLevels(std::vector<SonaroHost::Otio::Note> const& inNotes);

} // namespace SonaroCommand
