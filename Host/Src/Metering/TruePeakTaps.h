#pragma once

#include "zorvaccelerate/Metering.h"

#include <cstddef>
#include <vector>

namespace SonaroHost
{

// The interpolator of true peaks: a sinc of 49 taps in a Hann window at four times the rate below 96 kHz, at twice the
// rate below 192 kHz, and none from there on; the filter of libebur128, so that its true peak is found here too.
constexpr std::size_t kTruePeakTaps = 49;

// The factor by which the rate is multiplied; 1 for no interpolation.
std::size_t GetTruePeakFactor(double inSampleRate);

// The taps of a point that lies inPhase steps of 1 / inFactor after the older one of the samples beside it, at inFactor
// times the rate; the newest sample's tap comes first.
std::vector<double> GetTruePeakPhase(std::size_t inPhase, std::size_t inFactor);

// inFactor: above 1.
zorvaccelerate::utility::InterpolationTaps GetTruePeakTaps(std::size_t inFactor);

} // namespace SonaroHost
