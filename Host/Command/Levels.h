#pragma once

#include "Json.h"

#include <string>

namespace SonaroCommand
{

// "-3.02", "-inf" for silence.
std::string FormatDecibels(double inDecibels, int inDigits);

// "-3.02 dBFS", "-inf dBFS" for silence.
std::string FormatPeak(float inPeak);

// The number, or the word for silence, which has none in JSON.
Json GetNumberOrSilence(double inDecibels);

} // namespace SonaroCommand
