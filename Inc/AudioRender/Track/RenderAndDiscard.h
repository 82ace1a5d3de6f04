#pragma once

#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/Types.h"
#include "zorvaudiodsp/AudioBuffer.h"

namespace SN
{

// What is rendered only for the sake of the state that it leaves in processors and delay lines.
struct DiscardedRange
{
	unsigned mFrames = 0;
	FrameRate mFrameRate;
	// The largest of the blocks that it is cut into, in frames.
	unsigned mMaxBlockSize = 0;
	bool mReverse = false;
	// Whether each block is read from the disk first, which takes its time.
	bool mPrefetches = false;
};

// Renders block by block from ioPosition on, which moves along, into ioBuffer.
void RenderAndDiscard(IAudioGenerator& ioGenerator, DiscardedRange const& inRange, TickTime& ioPosition,
	dsp::AudioBuffer& ioBuffer) SONARO_NONBLOCKING;

} // namespace SN
