#pragma once

#include "SonaroHost/Waveform/Waveform.h"

#include <functional>
#include <optional>
#include <string_view>

namespace SonaroHost
{

// Gets bytes in order, some at a time.
using ByteSink = std::function<void(std::string_view inBytes)>;

// The minima and maxima in version 2 of the format that browsers' peak viewers read. inBits: 8 or 16 of a
// value, full scale being 2 to the power of inBits - 1; what lies beyond is cut off.
void WriteWaveformJson(Waveform const& inWaveform, int inBits, ByteSink const& inSink);

// The same in binary, lower bytes first:
//
//	bytes  type    what
//	0      int32   version, 2
//	4      uint32  flags: bit 0 for values of 8 bits
//	8      int32   sample rate
//	12     int32   samples per column
//	16     uint32  columns
//	20     int32   channels
//	24     int8 or int16: column by column, for each channel minimum and maximum
void WriteWaveformDat(Waveform const& inWaveform, int inBits, ByteSink const& inSink);

// The waveform of such bytes with values of 16 bits, its RMS 0; nothing for others.
std::optional<Waveform> ReadWaveformDat(std::string_view inBytes);

} // namespace SonaroHost
