#include "FrameGains.h"

#include "zorvaccelerate/VectorArithmetic.h"
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
			// Multiplied in any case, so that compilers make vectors of it.
			float const scaled = samples[i] * inGains[i];
			samples[i] = inGains[i] == 0.0f ? 0.0f : scaled;
		}
	}
}

void ApplyGain(dsp::AudioBuffer& ioBuffer, unsigned inFirst, unsigned inCount, float inGain)
{
	for (unsigned long long channel = 0; channel < ioBuffer.GetNumChannels(); ++channel)
	{
		if (!ioBuffer.IsChannelSilent(channel))
		{
			float* const samples = ioBuffer.GetChannel(channel) + inFirst;
			ScaleBy(inCount, samples, inGain, samples);
		}
	}
}

void ScaleBy(unsigned inCount, float const* inSamples, float inGain, float* outSamples)
{
	if (inGain == 0.0f)
	{
		zorvaccelerate::utility::Zero(inCount, outSamples);
		return;
	}
	zorvaccelerate::utility::MulConstant(inCount, inSamples, inGain, outSamples);
}

void ScaleByBoth(unsigned inCount, float const* inSamples, float inFirst, float inSecond, float* outSamples)
{
	if (inFirst == 1.0f || inSecond == 0.0f)
	{
		ScaleBy(inCount, inSamples, inSecond, outSamples);
	}
	else if (inSecond == 1.0f)
	{
		ScaleBy(inCount, inSamples, inFirst, outSamples);
	}
	else
	{
		zorvaccelerate::utility::MulTwoConstants(inCount, inSamples, inFirst, inSecond, outSamples);
	}
}

} // namespace SonaroHost
