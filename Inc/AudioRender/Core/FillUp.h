#pragma once

#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>

namespace SN
{

// Brings a buffer back to the length of the request after a generator that ran short has cut it: silence follows what
// was delivered. Nothing to do for any other.
inline void FillUp(dsp::AudioBuffer& ioBuffer, unsigned inFrames)
{
	unsigned const filled = ioBuffer.GetUseSize();
	if (filled >= inFrames)
	{
		return;
	}
	ioBuffer.SetUseSize(inFrames);
	for (unsigned long long channel = 0; channel < ioBuffer.GetNumChannels(); ++channel)
	{
		if (!ioBuffer.IsChannelSilent(channel))
		{
			std::fill(ioBuffer.GetChannel(channel) + filled,
				ioBuffer.GetChannel(channel) + ioBuffer.GetUseSize(), 0.0f);
		}
	}
}

} // namespace SN
