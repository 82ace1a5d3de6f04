#pragma once

#include "Time/Scaler/AlignedSamples.h"
#include "Time/Scaler/ScalerGeometry.h"
#include "Time/Scaler/ScalerWindows.h"
#include "zorvaudiodsp/FFT.h"

#include <memory>

namespace SN
{

// What the channels of a phase vocoder share: its shape, tables, and memory in which one frame of one channel at a time
// is worked on.
class ScalerFrame
{
public:
	// Throws std::bad_alloc.
	explicit ScalerFrame(ScalerGeometry const& inGeometry);

	ScalerGeometry const mGeometry;
	ScalerWindows const mWindows;
	// The same one for both ways where the sizes are.
	std::shared_ptr<dsp::FFT> const mForward;
	std::shared_ptr<dsp::FFT> const mInverse;

	// Samples of the input's side and their spectrum.
	AlignedSamples mSpectrum;
	// Of the bins of either side, 0 where the input has none.
	AlignedSamples mMagnitudes;
	AlignedSamples mFrequencies;
	// The output's spectrum and its samples.
	AlignedSamples mResynthesis;

	unsigned GetInputBins() const;
	unsigned GetOutputBins() const;
};

} // namespace SN
