#pragma once

#include "Json.h"

#include <cstdint>
#include <string>

namespace SonaroCommand
{

// A number with so many digits after the point: "-3.02", "-inf" for the decibels of silence.
std::string FormatFixed(double inNumber, int inDigits);

// "-3.02 dBFS", "-inf dBFS" for silence.
std::string FormatPeak(float inPeak);

// How many times faster than real time a job was; 0 where it took no time.
double GetRealTimeFactor(std::int64_t inFrames, int inSampleRate, double inElapsedSeconds);
// "312 times faster than real time", with the end of its line.
std::string DescribeRealTimeFactor(double inRealTimeFactor);

// The number, or the word for silence, which has none in JSON.
Json GetNumberOrSilence(double inDecibels);

} // namespace SonaroCommand
