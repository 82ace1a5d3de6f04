#pragma once

#include "SonaroHost/Files/OutputFile.h"
#include "SonaroHost/Waveform/Waveform.h"

namespace SonaroHost
{

// The minima and maxima in version 2 of the format that browsers' peak viewers read. inBits: 8 or 16 of a
// value, full scale being 2 to the power of inBits - 1; what lies beyond is cut off.
void WriteWaveformJson(Waveform const& inWaveform, int inBits, OutputFile& ioFile);

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
void WriteWaveformDat(Waveform const& inWaveform, int inBits, OutputFile& ioFile);

} // namespace SonaroHost
