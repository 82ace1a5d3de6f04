#pragma once

#include "Time/Scaler/SampleRing.h"

#include <cstdint>

namespace SN
{

class ScalerFrame;

// The output's side of one channel: frames of bins go in, are added up where they overlap, and what no later frame
// reaches comes out.
class ScalerSynthesis
{
public:
	// At the start of an output. Throws std::bad_alloc.
	void Init(ScalerFrame const& inFrame);

	// Adds the frame that stands in ioFrame as bins.
	void AddFrame(ScalerFrame& ioFrame);

	// The samples that are final once the frame is added, next to come out.
	unsigned GetFinalCount() const { return mFinalCount; }
	void CopyFinal(float* outSamples) const { mRing.Read(mReadPosition, mFinalCount, outSamples); }
	// Takes the first inCount of them out; the others come again.
	void Remove(unsigned inCount);
	std::int64_t GetOutputCount() const { return mReadPosition; }

	// On to the next frame.
	void Advance(ScalerFrame const& inFrame);

private:
	void MakeSpectrum(ScalerFrame& ioFrame);

	SampleRing mRing;
	AlignedSamples mPhases;
	// Where the frame has its centre.
	std::int64_t mPosition = 0;
	// The next sample to come out.
	std::int64_t mReadPosition = 0;
	unsigned mFinalCount = 0;
};

} // namespace SN
