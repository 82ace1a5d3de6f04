#pragma once

#include "Time/Scaler/SampleRing.h"

#include <cstdint>

namespace SN
{

class ScalerFrame;

// The input's side of one channel: samples go in hop by hop, and frames come out as magnitudes and frequencies of bins.
// Windows are laid on the input at its own positions and folded to the length of the transform there, so that phases
// refer to one point of time for good.
class ScalerAnalysis
{
public:
	// At the start of an input. Throws std::bad_alloc.
	void Init(ScalerFrame const& inFrame);

	// Takes samples until the hop is whole; returns how many.
	unsigned Read(float const* inSamples, unsigned inCount);
	bool HasHop() const { return mSamplesSinceHop >= mSamplesPerHop; }
	// The next frame needs so many; 0 when the input has ended.
	unsigned GetHop() const { return mSamplesPerHop; }
	std::int64_t GetInputCount() const { return mInputCount; }

	// The hop's samples, for statistics.
	void CopyHop(float* outSamples) const;

	// The bins of the frame that the hop completes.
	void MakeBins(ScalerFrame& ioFrame);
	// On to the next frame.
	void Advance(ScalerFrame const& inFrame);

private:
	void EndInput(ScalerFrame const& inFrame);

	SampleRing mRing;
	AlignedSamples mPhases;
	// Where the frame has its centre.
	std::int64_t mPosition = 0;
	std::int64_t mWritePosition = 0;
	std::int64_t mInputCount = 0;
	std::int64_t mEndOfInput = 0;
	unsigned mSamplesPerHop = 0;
	unsigned mSamplesSinceHop = 0;
	bool mIsEndOfInput = false;
};

} // namespace SN
