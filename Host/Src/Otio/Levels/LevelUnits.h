#pragma once

#include "LevelShapes.h"
#include "Otio/Json/Cursor.h"

#include "SonaroHost/Otio/MixSettings.h"

namespace SonaroHost::Otio
{

// Gives the values of a level, as another program wrote them, their meaning: by the unit that the shape has, otherwise
// by the name and the values, where a note reports the guess. A mute becomes a factor. inAreFractions: they were
// written as "1/2".
// False, and no note, for values that the unit does not have, and where no unit is likely.
bool ApplyUnit(Cursor const& inLevel, LevelName const& inName, LevelShape const& inShape, bool inAreFractions,
	Curve& ioCurve);

} // namespace SonaroHost::Otio
