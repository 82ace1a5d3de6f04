#pragma once

#include "Otio/Json/Cursor.h"

#include "SonaroHost/Otio/MixSettings.h"

namespace SonaroHost::Otio
{

// What carries settings; it decides which there can be.
enum class SettingsOwner : unsigned
{
	kTimeline = 1,
	kStack = 2,
	kTrack = 4,
	kClip = 8,
	kGap = 16,
	kTransition = 32,
	kTimeWarp = 64,
};

// The settings under "sonaro" of an object's metadata. A wrong value is refused, and a note names an unknown key.
MixSettings ReadMixSettings(Cursor const& inMetadata, SettingsOwner inOwner);

// What the timeline says goes before what its stack says.
MixSettings MergeSettings(MixSettings inTimeline, MixSettings const& inStack, Cursor const& inPlace);

} // namespace SonaroHost::Otio
