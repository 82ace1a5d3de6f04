#pragma once

#include "Time/Resampler/CubicCoefficientTable.h"
#include "Time/Resampler/InterpolatingResampler.h"

namespace SN
{

// A curve through four neighbouring samples, its weights from a shared table.
class AudioResamplerCubic final : public InterpolatingResampler
{
public:
	AudioResamplerCubic();

	unsigned GetInputSampleCount(unsigned inNumOutput) SONARO_NONBLOCKING override;

private:
	float InterpolateAt(Channel const& inChannel, double inPosition) const override;
	void InterpolateInside(unsigned inCount, double const* inPositions, float const* inSamples,
		float* outSamples) const override;
	void RenewHistory(Channel const& inChannel, unsigned inNumInput, float* ioHistory,
		unsigned long long inStride) const override;

	std::shared_ptr<CubicCoefficientTable const> const mTable;
};

} // namespace SN
