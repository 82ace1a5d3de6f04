#include "Sonaro/AudioUtilities.h"

#include "zorvaccelerate/VectorArithmetic.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>

namespace SN
{

namespace
{

constexpr unsigned kMaxResampleBufferSize = 0x40000;

// An array in the zero-filled segment: it costs no load time and no file size, and is never written.
alignas(64) float sSilence[kMaxResampleBufferSize];

} // namespace

void ConvertInt32ToFloat32InPlace(int* ioData, unsigned inCount)
{
	zorvaccelerate::utility::ConvertInt32ToFloat32_InPlace(inCount, ioData);
}

void InterleaveBuffer(
	dsp::AudioBuffer const& inBuffer, unsigned long long inChannels, unsigned inSamples, float* outData)
{
	if (!outData)
	{
		return;
	}
	unsigned long long const channels = std::min(inBuffer.GetNumChannels(), inChannels);
	unsigned const samples = std::min(inBuffer.GetUseSize(), inSamples);
	for (unsigned long long channel = 0; channel < channels; ++channel)
	{
		float* out = outData + channel;
		bool const silent = inBuffer.IsChannelSilent(channel);
		float const* const in = inBuffer.GetChannel(channel);
		for (unsigned sample = 0; sample < samples; ++sample, out += channels)
		{
			*out = silent ? 0.0f : in[sample];
		}
	}
}

float const* GetSilenceBufferPtr(unsigned)
{
	return sSilence;
}

unsigned GetMaxResampleBufferSize()
{
	return kMaxResampleBufferSize;
}

} // namespace SN
