#include "stretch/omega/SampleHistory.h"

#include <algorithm>
#include <cstring>

namespace dsp::stretch::omega
{

void SampleHistory::Init(unsigned inNumChannels, unsigned inKeep, unsigned inLargestAppend)
{
	mNumChannels = inNumChannels;
	mKeep = inKeep;
	// What is kept moves to the front once for each length of it.
	mCapacity = 2 * static_cast<std::size_t>(inKeep) + inLargestAppend;
	// Vectors are read whole, beyond the end of the last channel too.
	mSamples.assign(mNumChannels * mCapacity + 16, 0.0f);
	Reset();
}

void SampleHistory::Reset()
{
	mEnd = 0;
	mStart = -mKeep;
	for (unsigned channel = 0; channel < mNumChannels; ++channel)
	{
		std::fill_n(At(channel, mStart), mKeep, 0.0f);
	}
}

void SampleHistory::Extend(unsigned inCount)
{
	if (mEnd + inCount - mStart > static_cast<std::int64_t>(mCapacity))
	{
		std::int64_t const start = mEnd - mKeep;
		for (unsigned channel = 0; channel < mNumChannels; ++channel)
		{
			float* const samples = At(channel, mStart);
			std::memmove(
				samples, samples + (start - mStart), static_cast<std::size_t>(mKeep) * sizeof(float));
		}
		mStart = start;
	}
	mEnd += inCount;
}

void SampleHistory::Append(float const* const* inSamples, unsigned inCount)
{
	std::int64_t const position = mEnd;
	Extend(inCount);
	for (unsigned channel = 0; channel < mNumChannels; ++channel)
	{
		std::copy_n(inSamples[channel], inCount, At(channel, position));
	}
}

} // namespace dsp::stretch::omega
