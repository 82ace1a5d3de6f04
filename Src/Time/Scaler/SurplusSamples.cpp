#include "Time/Scaler/SurplusSamples.h"

#include <algorithm>

namespace SN
{

void SurplusSamples::Clear()
{
	mSamples.Clear(kCapacity);
	mFirst = 0;
	mCount = 0;
}

void SurplusSamples::Append(float const* inSamples, unsigned inCount)
{
	unsigned const count = std::min(inCount, kCapacity - mCount);
	unsigned const begin = (mFirst + mCount) % kCapacity;
	unsigned const beforeEnd = std::min(count, kCapacity - begin);
	std::copy_n(inSamples, beforeEnd, mSamples.Get() + begin);
	std::copy_n(inSamples + beforeEnd, count - beforeEnd, mSamples.Get());
	mCount += count;
}

unsigned SurplusSamples::Take(unsigned inCount, float* outSamples)
{
	unsigned const count = std::min(inCount, mCount);
	unsigned const beforeEnd = std::min(count, kCapacity - mFirst);
	std::copy_n(mSamples.Get() + mFirst, beforeEnd, outSamples);
	std::copy_n(mSamples.Get(), count - beforeEnd, outSamples + beforeEnd);
	mFirst = (mFirst + count) % kCapacity;
	mCount -= count;
	return count;
}

} // namespace SN
