#pragma once

#include "Json.h"
#include "SonaroHost/Otio/Note.h"
#include "SonaroHost/Otio/TimelineReport.h"

#include <vector>

namespace SonaroCommand
{

// Warns of missing media and of what was guessed or ignored; beyond 20 lines they are only counted.
void WarnOfNotes(std::vector<SonaroHost::Otio::MissingMedia> const& inMissing,
	std::vector<SonaroHost::Otio::Note> const& inNotes);

Json ListMissing(std::vector<SonaroHost::Otio::MissingMedia> const& inMissing);
Json ListNotes(std::vector<SonaroHost::Otio::Note> const& inNotes);

} // namespace SonaroCommand
