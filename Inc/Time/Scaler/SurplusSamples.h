#pragma once

#include "Time/Scaler/AlignedSamples.h"

namespace SN
{

// Outputs of one channel that nobody has asked for yet, first in, first out. What goes beyond the capacity is lost.
class SurplusSamples
{
public:
	static constexpr unsigned kCapacity = 32768;

	// Empties it, and makes it if this is the first time. Throws std::bad_alloc.
	void Clear();

	unsigned GetCount() const { return mCount; }
	void Append(float const* inSamples, unsigned inCount);
	// The first ones, at most inCount; returns how many.
	unsigned Take(unsigned inCount, float* outSamples);

private:
	// A ring.
	AlignedSamples mSamples;
	unsigned mFirst = 0;
	unsigned mCount = 0;
};

} // namespace SN
