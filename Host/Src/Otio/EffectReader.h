#pragma once

#include "Otio/Json/Cursor.h"

#include "SonaroHost/Otio/Model.h"

#include <optional>
#include <vector>

namespace SonaroHost::Otio
{

// inRange: what the item that has the effects shows of its own time, where that is known.
void ReadEffects(
	Cursor const& inList, std::optional<TimeRange> const& inRange, std::vector<Effect>& outEffects);

// Markers that cannot be used are left out, and a note says so.
void ReadMarkers(Cursor const& inList, std::vector<Marker>& outMarkers);

} // namespace SonaroHost::Otio
