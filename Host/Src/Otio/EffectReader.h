#pragma once

#include "Otio/Json/Cursor.h"
#include "Otio/Mix/MixSettingsReader.h"

#include "SonaroHost/Otio/Model.h"

#include <optional>
#include <vector>

namespace SonaroHost::Otio
{

// inOwner: what has the effects. inRange: what that shows of its own time, where that is known.
void ReadEffects(Cursor const& inList, SettingsOwner inOwner, std::optional<TimeRange> const& inRange,
	std::vector<Effect>& outEffects);

// Markers that cannot be used are left out, and a note says so.
void ReadMarkers(Cursor const& inList, std::vector<Marker>& outMarkers);

} // namespace SonaroHost::Otio
