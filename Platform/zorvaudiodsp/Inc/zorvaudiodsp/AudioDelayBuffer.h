#pragma once

#include "zorvaudiodsp/AudioBuffer.h"

#include <array>

namespace dsp
{

// A fixed delay line. A block is written and then read: the block read equals what was written so many
// samples earlier, with silence before that, however the blocks are cut.
//
// Silence  A silent block into a silent line comes out flagged.
// Memory   Init alone allocates.
// Threads  One at a time.
class ZORV_API AudioDelayBuffer
{
public:
	// Empties the line. inMaxBlockSize: the largest block that will be written.
	void Init(unsigned long long inChannels, unsigned inDelaySamples, unsigned inMaxBlockSize);

	// Forgets what was written.
	void Reset();

	// Takes UseSize samples; channels that the block lacks count as silent. What goes beyond the largest
	// block is lost.
	void Write(AudioBuffer const& inBlock);

	// Fills UseSize samples with what was written the delay earlier than the last block of as many
	// samples. Channels that the line lacks are flagged.
	void Read(AudioBuffer& outBlock) const;

private:
	AudioBuffer mRing;
	unsigned mDelay = 0;
	unsigned mMaxBlockSize = 0;
	// Where the next sample goes.
	unsigned mWritePosition = 0;
	// The newest samples of each channel that are all silent, counted up to the ring's length.
	std::array<unsigned, AudioBuffer::kMaxChannels> mSilentSamples{};
};

} // namespace dsp
