#pragma once

#include "Otio/Json/Cursor.h"

#include "SonaroHost/Otio/MixSettings.h"

#include <cstddef>

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
};

// Gains in decibels, minus infinity among them.
inline constexpr double kMaxGainDecibels = 100.0;
inline constexpr std::size_t kMaxSubmixes = 1000;

// The settings under "sonaro" of an object's metadata. A wrong value is refused, and a note names an unknown key.
MixSettings ReadMixSettings(Cursor const& inMetadata, SettingsOwner inOwner);

// Puts keyframes into the order of time; of those at one time the last one stays, and a note at inPlace says so.
void SortKeyframes(Curve& ioCurve, Cursor const& inPlace);

// What the timeline says goes before what its stack says.
MixSettings MergeSettings(MixSettings inTimeline, MixSettings const& inStack, Cursor const& inPlace);

} // namespace SonaroHost::Otio
