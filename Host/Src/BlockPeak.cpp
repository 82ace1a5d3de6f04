#include "SonaroHost/BlockPeak.h"

#include "zorvaudiodsp/AudioBuffer.h"

#include <cmath>

namespace SonaroHost
{

float FindPeak(dsp::AudioBuffer const& inBlock, float inPeak)
{
	float peak = inPeak;
	for (unsigned channel = 0; channel < inBlock.GetNumChannels(); ++channel)
	{
		if (inBlock.IsChannelSilent(channel))
		{
			continue;
		}
		float const* const samples = inBlock.GetChannel(channel);
		for (unsigned i = 0; i < inBlock.GetUseSize(); ++i)
		{
			float const magnitude = std::fabs(samples[i]);
			peak = magnitude > peak ? magnitude : peak;
		}
	}
	return peak;
}

} // namespace SonaroHost
