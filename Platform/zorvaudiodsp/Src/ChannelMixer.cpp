#include "zorvaudiodsp/ChannelMixer.h"

#include "zorvaccelerate/ChannelMixing.h"

#include <algorithm>

namespace dsp
{

void ChannelMixer::ResetParameter(bool inIdentity)
{
	mGains = {};
	for (unsigned long long channel = 0; inIdentity && channel < kMaxChannels; ++channel)
	{
		mGains[channel][channel] = 1.0f;
	}
}

void ChannelMixer::SetChannelCount(unsigned long long inInputs, unsigned long long inOutputs)
{
	mInputs = std::min(inInputs, kMaxChannels);
	mOutputs = std::min(inOutputs, kMaxChannels);
}

void ChannelMixer::SetParameter(int inIndex, float inGain)
{
	constexpr int kStride = static_cast<int>(kMaxChannels);
	if (inIndex >= 0 && inIndex < kStride * kStride)
	{
		mGains[static_cast<unsigned>(inIndex / kStride)][static_cast<unsigned>(inIndex % kStride)] = inGain;
	}
}

void ChannelMixer::Process(float const* const* inInputs, float* const* outOutputs, int inSamples,
	SilenceFlags inSilence, SilenceFlags& outSilence) const
{
	outSilence = SilenceFlags::All();
	for (unsigned long long output = 0; output < mOutputs; ++output)
	{
		float const* inputs[kMaxChannels];
		float gains[kMaxChannels];
		unsigned count = 0;
		for (unsigned long long input = 0; input < mInputs; ++input)
		{
			float const gain = mGains[output][input];
			if (gain != 0.0f && !inSilence.Test(input))
			{
				inputs[count] = inInputs[input];
				gains[count] = gain;
				++count;
			}
		}
		if (count > 0)
		{
			zorvaccelerate::utility::WeightedSum(
				static_cast<unsigned>(std::max(inSamples, 0)), count, inputs, gains, outOutputs[output]);
			outSilence.Clear(output);
		}
	}
}

} // namespace dsp
