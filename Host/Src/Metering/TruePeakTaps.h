#pragma once

#include "zorvaccelerate/Metering.h"

#include <cstddef>

namespace SonaroHost
{

// The interpolator of true peaks: a sinc of 49 taps in a Hann window at four times the rate below 96 kHz, at twice the
// rate below 192 kHz, and none from there on; the filter of libebur128, so that its true peak is found here too.
constexpr std::size_t kTruePeakTaps = 49;

// The factor by which the rate is multiplied; 1 for no interpolation.
std::size_t GetTruePeakFactor(double inSampleRate);

// A tap of the filter at inFactor times the rate.
double GetTruePeakTap(std::size_t inIndex, std::size_t inFactor);

// inFactor: above 1.
zorvaccelerate::utility::InterpolationTaps GetTruePeakTaps(std::size_t inFactor);

} // namespace SonaroHost
