#pragma once

#include "Cursor.h"

#include "SonaroHost/Otio/MixSettings.h"

#include <optional>

namespace SonaroHost::Otio
{

// Gain and pan in the shapes that other programs leave in metadata. What has one meaning only is read; where
// a meaning is likely a note tells of the guess; everything else is left with a note.
//
// Parameters  {"parameters": {"gain": -6}}, {"parameters": [{"name": "Level", "value": "0.5"}]}, with a value
//             or with keyframes, in the metadata or one object below it.
// Gains       Decibels by name ("gain_db"), by unit ("dB") or where one is negative; linear where all lie from
//             0 to 4 and one is above 0.
// Pans        From -1 to 1 where one is negative or all are 0; written as fractions, from 0 (left) over "1/2"
//             to 1.
// Keyframes   {"time": RationalTime or seconds} or {"frame" or "when": a number}, the latter at inRate, with a
//             "value".
ForeignLevels ReadEffectLevels(Cursor const& inMetadata, std::optional<double> inRate);

// {"Pan": {"ControlPoints": [{"Time": "1/4", "Value": "1/2"}]}}, or "Gain", one object below an item's metadata.
// Times written as fractions are fractions of the item's length.
ForeignLevels ReadItemLevels(Cursor const& inMetadata, std::optional<double> inRate);

} // namespace SonaroHost::Otio
