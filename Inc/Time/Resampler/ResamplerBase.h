#pragma once

#include "Sonaro/IAudioResampler.h"

namespace SN
{

// What all general resamplers share: the rates, the channels and the identity.
class ResamplerBase : public Implements<ResamplerBase, IAudioResampler>
{
public:
	FrameRate GetInputFrameRate() SONARO_NONBLOCKING override { return mInputFrameRate; }
	FrameRate GetOutputFrameRate() SONARO_NONBLOCKING override { return mOutputFrameRate; }
	InterfaceRef<IAudioResampler> GetSelfReference() override
	{
		return InterfaceRef<IAudioResampler>::FromThis(this);
	}

protected:
	void StoreRates(FrameRate const& inInputRate, FrameRate const& inOutputRate);
	// Input samples a second over output samples a second; not finite where the output has no rate.
	double GetRatio() const;

	// The count nearest to inCount that an unsigned holds; 0 for not-a-number.
	static unsigned ToCount(double inCount);

	unsigned long long mNumChannels = 0;

private:
	FrameRate mInputFrameRate;
	FrameRate mOutputFrameRate;
};

} // namespace SN
