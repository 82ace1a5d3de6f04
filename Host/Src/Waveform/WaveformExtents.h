#pragma once

#include "SonaroHost/Waveform/Waveform.h"
#include "SonaroHost/Waveform/WaveformStyle.h"

#include <cstddef>
#include <vector>

namespace SonaroHost
{

// What a pixel of a waveform covers, counted from the top down.
struct WaveformExtent
{
	bool IsEmpty() const { return mBottom <= mTop; }

	double mTop = 0.0;
	double mBottom = 0.0;
};

// The room of one channel in a picture, and its waveform there, pixel by pixel.
struct WaveformRoom
{
	double mTop = 0.0;
	double mHeight = 0.0;
	unsigned mWidth = 0;
};

// From minimum to maximum: each pixel shows the columns within it, or the one around it, is at least a pixel high, and
// touches its neighbours.
std::vector<WaveformExtent> FindWave(Waveform const& inWaveform, std::size_t inChannel,
	WaveformStyle const& inStyle, WaveformRoom const& inRoom);

// The RMS around the middle, where the wave crosses it, and not beyond the wave itself; empty elsewhere.
std::vector<WaveformExtent> FindRms(Waveform const& inWaveform, std::size_t inChannel,
	WaveformStyle const& inStyle, WaveformRoom const& inRoom);

} // namespace SonaroHost
