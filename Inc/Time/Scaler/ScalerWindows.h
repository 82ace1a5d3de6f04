#pragma once

#include "Time/Scaler/AlignedSamples.h"

namespace SN
{

struct ScalerGeometry;

// The windows of a phase vocoder, from their first sample on: the square of a cosine, which meets its own overlaps in
// whole sums, times a sinc where the window is longer than what it cuts out.
struct ScalerWindows
{
	explicit ScalerWindows(ScalerGeometry const& inGeometry);

	// A tone of amplitude 1 has the magnitude 1.
	AlignedSamples mAnalysis;
	// Its sinc is 0 at the centres of neighbouring frames.
	AlignedSamples mSynthesis;
};

} // namespace SN
