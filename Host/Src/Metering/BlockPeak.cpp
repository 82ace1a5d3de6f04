#include "SonaroHost/Metering/BlockPeak.h"

#include "zorvaccelerate/VectorArithmetic.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>

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
		peak = std::max(
			peak, zorvaccelerate::utility::FindPeak(inBlock.GetUseSize(), inBlock.GetChannel(channel)));
	}
	return peak;
}

} // namespace SonaroHost
