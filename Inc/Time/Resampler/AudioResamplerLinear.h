#pragma once

#include "Time/Resampler/InterpolatingResampler.h"

namespace SN
{

// A straight line between two neighbouring samples. It has no delay: at equal rates the output is the input.
class AudioResamplerLinear final : public InterpolatingResampler
{
public:
	AudioResamplerLinear();

	// Gives nearly 2^32 times the ratio for 0 outputs, as 0 - 1 wraps around.
	unsigned GetInputSampleCount(unsigned inNumOutput) SONARO_NONBLOCKING override;

private:
	float InterpolateAt(Channel const& inChannel, double inPosition) const override;
	void InterpolateInside(unsigned inCount, double const* inPositions, float const* inSamples,
		float* outSamples) const override;
	void RenewHistory(Channel const& inChannel, unsigned inNumInput, float* ioHistory,
		unsigned long long inStride) const override;
};

} // namespace SN
