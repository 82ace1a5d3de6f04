#pragma once

#include "zorvaccelerate/VectorArithmetic.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <atomic>
#include <memory>
#include <vector>

namespace SN
{

// Source audio between the generator that gives it and the engine that takes it. Only Init allocates.
class SourceRing
{
public:
	void Init(unsigned inNumChannels, unsigned inSize);
	void Clear();

	unsigned GetNumChannels() const { return static_cast<unsigned>(mChannels.size()); }
	unsigned GetFilled() const { return static_cast<unsigned>(mWriteCount.load() - mReadCount.load()); }
	unsigned GetRoom() const { return mSize - GetFilled(); }

	// Takes the first samples, for which there is room, whatever the silence flags say. Channels that the buffer lacks
	// get zeros.
	void Write(dsp::AudioBuffer const& inBuffer, unsigned inCount);
	// Gives as many samples, which are there, of the first channels.
	void Read(unsigned inNumChannels, unsigned inCount, float* const* outChannels);

private:
	struct Free
	{
		void operator()(float* inMemory) const { zorvaccelerate::utility::Free(inMemory); }
	};

	std::vector<std::unique_ptr<float, Free>> mChannels;
	unsigned mSize = 0;
	// All that ever went in and out.
	std::atomic<unsigned long long> mWriteCount{0};
	std::atomic<unsigned long long> mReadCount{0};
};

} // namespace SN
