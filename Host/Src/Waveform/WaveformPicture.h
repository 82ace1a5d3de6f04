#pragma once

#include "SonaroHost/Files/OutputFile.h"
#include "SonaroHost/Waveform/Waveform.h"
#include "SonaroHost/Waveform/WaveformStyle.h"

#include <cstdint>

namespace SonaroHost
{

// Draws a waveform so many pixels wide, the channels one below the other in bands of the same height, down
// to a pixel. Each pixel shows the columns within it, or the one around it; neighbours always touch.
// Throws a HostError when there is no memory for it.
void WriteWaveformPng(
	Waveform const& inWaveform, WaveformStyle const& inStyle, unsigned inWidth, OutputFile& ioFile);
void WriteWaveformSvg(
	Waveform const& inWaveform, WaveformStyle const& inStyle, unsigned inWidth, OutputFile& ioFile);

// Throws a HostError for a picture that would take more than 1 GiB of memory as a bitmap.
void CheckBitmapSize(std::int64_t inWidth, std::int64_t inHeight);

} // namespace SonaroHost
