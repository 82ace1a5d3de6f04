#pragma once

#include "zorvaudiodsp/AudioSubBuffer.h"

namespace SN
{

// Gives a window so many channels, unless it has them: from block to block they are the same.
inline void SetWidth(dsp::AudioSubBuffer& ioWindow, unsigned long long inChannels)
{
	if (ioWindow.GetNumChannels() != inChannels)
	{
		ioWindow.Init(inChannels);
	}
}

} // namespace SN
