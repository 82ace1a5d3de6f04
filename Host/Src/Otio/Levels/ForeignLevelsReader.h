#pragma once

#include "Otio/Json/Cursor.h"
#include "ParameterState.h"

#include "SonaroHost/Otio/MixSettings.h"
#include "SonaroHost/Otio/RationalTime.h"

#include <optional>
#include <string>

namespace SonaroHost::Otio
{

// What the metadata of an effect hold. LevelShapes.cpp has the shapes in which levels are known; a level in another one
// gives a note.
struct EffectLevels
{
	ForeignLevels mLevels;
	// The state of its other parameters together; an effect that is switched off is at its default.
	ParameterState mRest = ParameterState::kUnknown;
	// A level in it is not read, and a note says so.
	bool mHasUnreadLevel = false;
	// The name that the metadata give; empty for none.
	std::string mName;
};

// Levels stand under their names in the metadata or in one object below, or in the parameters of either.
// inRange: what the item shows of its own time, where that is known.
EffectLevels ReadEffectLevels(Cursor const& inMetadata, std::optional<TimeRange> const& inRange);

} // namespace SonaroHost::Otio
