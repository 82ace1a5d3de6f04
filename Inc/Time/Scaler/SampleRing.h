#pragma once

#include "Time/Scaler/AlignedSamples.h"

#include <cstdint>

namespace SN
{

// A ring of samples, each in the place of its position in a stream: position p lies at p modulo the length. Positions
// may be negative.
class SampleRing
{
public:
	// All zeros. Throws std::bad_alloc.
	void Clear(unsigned inLength) { mSamples.Clear(inLength); }

	void Write(std::int64_t inPosition, unsigned inCount, float const* inSamples);
	void Read(std::int64_t inPosition, unsigned inCount, float* outSamples) const;
	void WriteZeros(std::int64_t inPosition, unsigned inCount);

	// out += ring * window from inPosition on, where out is a ring of its own, of inLength samples, by the same
	// positions.
	void AddWindowedTo(std::int64_t inPosition, unsigned inCount, float const* inWindow, unsigned inLength,
		float* ioOutput) const;
	// The other way round: ring += in * window.
	void AddWindowed(std::int64_t inPosition, unsigned inCount, float const* inWindow, unsigned inLength,
		float const* inInput);

private:
	AlignedSamples mSamples;
};

} // namespace SN
