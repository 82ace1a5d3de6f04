#pragma once

#include "zorvaudiodsp/AudioBuffer.h"

#include <array>

namespace dsp
{

// A matrix of gains between up to eight inputs and eight outputs. Plain data: a copy is a mixer of its
// own.
//
// Sum      An output is the sum over the inputs, in ascending order, of gain times input, each product
//          and each sum rounded to 32 bits. Silent inputs and gains of 0 add nothing.
// Threads  One at a time. Nothing allocates.
class ZORV_API ChannelMixer
{
public:
	static constexpr unsigned long long kMaxChannels = 8;

	// All gains 0, or with inIdentity 1 from each channel to itself.
	void ResetParameter(bool inIdentity);

	// Counts above 8 are taken as 8.
	void SetChannelCount(unsigned long long inInputs, unsigned long long inOutputs);

	// Sets the gain from input i to output o, linear, at the index i + 8 * o. Other indices are ignored.
	void SetParameter(int inIndex, float inGain);

	// Mixes inSamples of each input into each output, which must not overlap any input. inSilence: the
	// inputs that count as zeros, whatever they hold. outSilence: the outputs that nothing reached, whose
	// samples are left alone.
	void Process(float const* const* inInputs, float* const* outOutputs, int inSamples,
		SilenceFlags inSilence, SilenceFlags& outSilence) const;

private:
	// The gains by output and input.
	std::array<std::array<float, kMaxChannels>, kMaxChannels> mGains{};
	unsigned long long mInputs = 0;
	unsigned long long mOutputs = 0;
};

} // namespace dsp
