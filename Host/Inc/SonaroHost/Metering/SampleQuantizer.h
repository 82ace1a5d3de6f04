#pragma once

#include "SonaroHost/Base/OutputFormat.h"

#include <cstdint>

namespace SonaroHost
{

// Rounds the samples of one channel to integers, 1.0 being full scale.
//
// Rounding  To the nearest step, halves to even; without dither, integers come back bit for bit.
// Dither    The difference of two even random numbers, each of one step: triangular, two steps from
//           peak to peak, its mean and its variance free of the signal. The numbers depend on the channel
//           and on how many samples went before, so that any block size gives the same file.
// Clipping  At the ends of the range. Samples that lay beyond before dither are counted; what dither
//           alone pushes over the edge is not. Not-a-number becomes 0 and counts.
class SampleQuantizer
{
public:
	SampleQuantizer(int inBits, Dither inDither, unsigned inChannel);

	// Goes on as if so many samples had gone before, in a file whose bytes are asked for from its middle.
	void SkipTo(std::int64_t inSample);

	// The sample as an integer of so many bits.
	int Quantize(float inSample);

	std::int64_t GetClippedSamples() const { return mClippedSamples; }

private:
	// The next value of the dither in steps, above -1 and below 1.
	double GetNextDither();

	double mScale;
	Dither mDither;
	std::uint64_t mFirstState;
	std::uint64_t mRandomState;
	std::int64_t mClippedSamples = 0;
};

} // namespace SonaroHost
