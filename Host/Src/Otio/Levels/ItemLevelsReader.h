#pragma once

#include "Otio/Json/Cursor.h"

#include "SonaroHost/Otio/MixSettings.h"

#include <optional>

namespace SonaroHost::Otio
{

// What the metadata of an item say of levels. Gain and pan are read where they are objects with keyframes, one object
// below: {"x": {"Pan": {"ControlPoints": [{"Time": "1/4", "Value": "1/2"}]}}}; times written as fractions are fractions
// of the item's length. Notes say of gains, pans, mutes, solos and channel maps in other forms that they are not
// read, unless they change nothing or the item's own settings go before.
// inRange: what the item shows of its own time, where that is known.
ForeignLevels ReadItemLevels(
	Cursor const& inMetadata, std::optional<TimeRange> const& inRange, MixSettings const& inOwn);

// The same notes for mutes, solos and channel maps in the metadata of media. inOwn: the clip's own settings.
void TellOfMediaLevels(Cursor const& inMetadata, MixSettings const& inOwn);

} // namespace SonaroHost::Otio
