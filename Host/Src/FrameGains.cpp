#include "FrameGains.h"

#include "zorvaudiodsp/AudioBuffer.h"

namespace SonaroHost
{

void ApplyGains(dsp::AudioBuffer& ioBuffer, unsigned inFirst, unsigned inCount, float const* inGains)
{
	for (unsigned long long channel = 0; channel < ioBuffer.GetNumChannels(); ++channel)
	{
		if (ioBuffer.IsChannelSilent(channel))
		{
			continue;
		}
		float* const samples = ioBuffer.GetChannel(channel) + inFirst;
		for (unsigned i = 0; i < inCount; ++i)
		{
			samples[i] = inGains[i] == 0.0f ? 0.0f : samples[i] * inGains[i];
		}
	}
}

} // namespace SonaroHost
