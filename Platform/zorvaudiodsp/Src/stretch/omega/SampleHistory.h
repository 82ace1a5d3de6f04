#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace dsp::stretch::omega
{

// The newest samples of a stream of some channels, each channel in one piece. Positions count from the start of the
// stream; before it lies silence. Only Init allocates.
class SampleHistory
{
public:
	// inKeep: how many samples before the end stay readable; inLargestAppend: how many come at most at a time.
	void Init(unsigned inNumChannels, unsigned inKeep, unsigned inLargestAppend);
	// Back to the start of a stream.
	void Reset();

	// Room for inCount samples of each channel after the end, which GetEnd then includes.
	void Extend(unsigned inCount);
	void Append(float const* const* inSamples, unsigned inCount);

	// The first position that is kept for sure.
	std::int64_t GetStart() const { return mEnd - mKeep; }
	std::int64_t GetEnd() const { return mEnd; }
	// The samples from inPosition on, which lies within what is kept.
	float const* At(unsigned inChannel, std::int64_t inPosition) const
	{
		return mSamples.data() + inChannel * mCapacity + (inPosition - mStart);
	}
	float* At(unsigned inChannel, std::int64_t inPosition)
	{
		return mSamples.data() + inChannel * mCapacity + (inPosition - mStart);
	}

private:
	std::vector<float> mSamples;
	std::size_t mCapacity = 0;
	unsigned mNumChannels = 0;
	std::int64_t mKeep = 0;
	// The position of the first sample in memory, and the one after the last.
	std::int64_t mStart = 0;
	std::int64_t mEnd = 0;
};

} // namespace dsp::stretch::omega
