#include "zorvaudiodsp/ZeroBufferAccordingToSilenceFlags.h"

namespace dsp
{

void ZeroBufferAccordingToSilenceFlags(AudioBuffer& ioBuffer)
{
	for (unsigned long long channel = 0; channel < ioBuffer.GetNumChannels(); ++channel)
	{
		if (ioBuffer.IsChannelSilent(channel))
		{
			ioBuffer.ZeroChannel(channel, ioBuffer.GetUseSize(), false);
		}
	}
}

} // namespace dsp
