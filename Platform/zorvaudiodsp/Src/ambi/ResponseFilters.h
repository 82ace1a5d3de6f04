#pragma once

#include "ambi/EarConvolver.h"
#include "zorvaudiodsp/ambi/ResponseDescriptor.h"

namespace dsp::ambi
{

// The filters of W, Y, Z and X for each ear at a sample rate, of the set whose rate is nearest to it by ratio; empty
// ones where there is no set with a tap. Resampling is by a windowed sinc, in double precision.
EarConvolver::Filters MakeResponseFilters(ResponseDescriptor const& inDescriptor,
	float const* const (&inData)[EarConvolver::kNumEars], unsigned inSampleRate);

// How many taps each of these filters has.
unsigned CountTaps(ResponseDescriptor const& inDescriptor, unsigned inSampleRate);

} // namespace dsp::ambi
