#include "SignsOfZeros.h"

#include "zorvaudiodsp/AudioBuffer.h"

namespace SonaroHost
{

void DropSignsOfZeros(dsp::AudioBuffer& ioBlock)
{
	for (unsigned channel = 0; channel < ioBlock.GetNumChannels(); ++channel)
	{
		if (ioBlock.IsChannelSilent(channel))
		{
			continue;
		}
		float* const samples = ioBlock.GetChannel(channel);
		for (unsigned i = 0; i < ioBlock.GetUseSize(); ++i)
		{
			samples[i] += 0.0f;
		}
	}
}

} // namespace SonaroHost
