#pragma once

#include "Sonaro/Nonblocking.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <memory>

namespace SN
{

// A delay of whole samples, for all channels of a track or of one of its sends. Inactive until a delay is
// set: then audio passes as it is.
//
// Memory   SetDelay alone allocates.
// Silence  A flagged channel enters the line as zeros.
class CompensatingDelayLine
{
public:
	// Inactive, for blocks of up to inMaxSamples.
	void Init(unsigned inMaxSamples, unsigned inNumChannels);

	// Delays by so many samples from now on, with silence before. 0 leaves the line as it is. Throws
	// std::length_error where delay and block are longer than 2^31 samples.
	void SetDelay(unsigned inSamples);

	// The line delays the buffer that it is given from now on; before, it leaves a delayed copy.
	void SetInPlace() { mInPlace = true; }

	bool IsActive() const { return mMask != 0; }

	// The buffer that holds the delayed audio: ioBuffer itself for an inactive line and for one in place, else a
	// copy, which keeps the length of the largest block: what lies beyond a shorter one is old.
	dsp::AudioBuffer& Process(dsp::AudioBuffer& ioBuffer) SONARO_NONBLOCKING;

	unsigned GetMaxSamples() const { return mMaxSamples; }
	unsigned GetNumChannels() const { return mNumChannels; }

private:
	// One channel, in at most two straight runs through the ring.
	void ProcessChannel(
		float const* inInput, float* outOutput, unsigned long long inChannel, unsigned inCount);

	std::shared_ptr<dsp::AudioBuffer> mRing;
	// What a line that works on a copy leaves.
	std::shared_ptr<dsp::AudioBuffer> mOutput;
	unsigned mWriteIndex = 0;
	unsigned mReadIndex = 0;
	unsigned mNumChannels = 0;
	unsigned mMaxSamples = 0;
	// The ring's length less 1; 0 while inactive.
	unsigned mMask = 0;
	bool mInPlace = false;
};

} // namespace SN
