#pragma once

#include "zorvaccelerate/Metering.h"

namespace SonaroHost
{

// The K-weighting of ITU-R BS.1770: a high-pass and, above about 1.7 kHz, a shelf of 4 dB.
struct KWeighting
{
	// inSampleRate: in Hz, above 0.
	explicit KWeighting(double inSampleRate);

	zorvaccelerate::utility::LaneFilter mFilter{};
	// What the squares of the filter's output are to be multiplied by.
	double mPowerGain = 0.0;
};

} // namespace SonaroHost
