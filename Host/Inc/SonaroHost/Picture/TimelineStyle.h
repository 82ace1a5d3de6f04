#pragma once

#include "SonaroHost/Waveform/WaveformStyle.h"

#include <optional>

namespace SonaroHost
{

// What a picture of a timeline looks like.
struct TimelineStyle
{
	// Its height is not used.
	WaveformStyle mWave;
	// Pixels.
	unsigned mWidth = 1200;
	// Without a height it grows with the lanes, which become lower where there are many.
	std::optional<unsigned> mHeight;
};

} // namespace SonaroHost
