#pragma once

#include "Cursor.h"

#include "SonaroHost/Otio/Model.h"

#include <optional>
#include <vector>

namespace SonaroHost::Otio
{

// inRate: of the item that has the effects, where it is known.
void ReadEffects(Cursor const& inList, std::optional<double> inRate, std::vector<Effect>& outEffects);

// Markers that cannot be used are told of and left out.
void ReadMarkers(Cursor const& inList, std::vector<Marker>& outMarkers);

} // namespace SonaroHost::Otio
