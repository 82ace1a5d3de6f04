#pragma once

#include "Otio/Json/Cursor.h"

#include "SonaroHost/Otio/MixSettings.h"
#include "SonaroHost/Otio/RationalTime.h"

#include <cstddef>

namespace SonaroHost::Otio
{

// Gains in decibels, minus infinity among them.
inline constexpr double kMaxGainDecibels = 100.0;

// A time as seconds or as a RationalTime.
RationalTime ReadSecondsOrTime(Cursor const& inValue);
// What a control of a plugin is set to: a number, or true or false for 1 or 0, or an object with keyframes of these.
Curve ReadControlCurve(Cursor const& inValue);
// The same of a switch: true or false, or an object with keyframes of these.
Curve ReadSwitchCurve(Cursor const& inValue);
// A gain in decibels and a pan from -1 to 1: a number, or an object with keyframes.
Curve ReadGain(Cursor const& inValue);
Curve ReadPan(Cursor const& inValue);
// A factor of the speed, likewise; of keyframes at most kMaxSpeedKeyframes.
inline constexpr std::size_t kMaxSpeedKeyframes = 1000;
Curve ReadSpeed(Cursor const& inValue);
FadeShape ReadShape(Cursor const& inValue);
Fade ReadFade(Cursor const& inValue);

inline constexpr char kSameTimeNote[] = "two keyframes have the same time; the last one is used";
// Puts keyframes into the order of time; of those at one time the last one stays, and a note at inPlace says so.
void SortKeyframes(Curve& ioCurve, Cursor const& inPlace);

} // namespace SonaroHost::Otio
