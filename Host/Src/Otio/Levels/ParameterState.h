#pragma once

#include "LevelShapes.h"

namespace SonaroHost::Otio
{

// What a parameter does, as far as it says so itself.
enum class ParameterState
{
	// It states its default and has it, or no value at all.
	kDefault,
	kUnknown,
	// It states its default and has another value, or it has keyframes.
	kChanged,
};

ParameterState FindState(JsonValue const& inParameter, LevelShape const& inShape);

// An effect or parameter that says so by "enabled".
bool IsSwitchedOff(JsonValue const& inObject);

// Null, or a list or an object of nothing.
bool IsEmpty(JsonValue const& inValue);

} // namespace SonaroHost::Otio
