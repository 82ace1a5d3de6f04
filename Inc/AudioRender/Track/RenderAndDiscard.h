#pragma once

#include "Sonaro/IAudioGenerator.h"
#include "Sonaro/Types.h"
#include "zorvaudiodsp/AudioBuffer.h"

namespace SN
{

// What is rendered only for the sake of what it leaves behind in processors and delay lines.
struct DiscardedRange
{
	unsigned mFrames = 0;
	FrameRate mFrameRate;
	// Of the blocks that it is cut into.
	unsigned mMaxBlockSize = 0;
	bool mReverse = false;
	// Whether each block is read from the disk first, which takes its time.
	bool mPrefetches = false;
};

// Renders block by block from ioPosition on, which moves along, into ioBuffer.
void RenderAndDiscard(IAudioGenerator& ioGenerator, DiscardedRange const& inRange, TickTime& ioPosition,
	dsp::AudioBuffer& ioBuffer);

} // namespace SN
