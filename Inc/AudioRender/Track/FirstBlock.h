#pragma once

#include "Sonaro/Types.h"
#include "zorvaudiodsp/AudioSubBuffer.h"

namespace SN
{

// A request beyond the context's largest block, for a node that holds no more: what comes first in playing
// order is rendered, the rest is silence.
template <class Node>
void RenderFirstBlock(Node& ioNode, TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse)
{
	unsigned const largest = ioNode.GetMaxBlockSize();
	TickTime time = inTime;
	if (inReverse)
	{
		time.AddFrames(ioBuffer.GetUseSize() - largest, ioNode.GetFrameRate());
	}
	ioBuffer.Zero();
	dsp::AudioSubBuffer head;
	head.Init(ioBuffer.GetNumChannels());
	head.Assign(ioBuffer, 0);
	head.SetUseSize(largest);
	ioNode.GetAudioData(time, head, inReverse);
}

} // namespace SN
