#include "Time/Resampler/AudioResamplerLinear.h"

#include "zorvaccelerate/Resampling.h"

#include <cmath>

namespace SN
{

namespace
{

// The slope is taken in single precision, the rest in double.
float Interpolate(float inA, float inB, double inFraction)
{
	float const slope = inB - inA;
	return static_cast<float>(slope * inFraction + inA);
}

} // namespace

AudioResamplerLinear::AudioResamplerLinear()
	: InterpolatingResampler({.mHistoryRows = 2,
		  .mFirstIndex = 0.0,
		  .mSamplesAhead = 1.0,
		  .mHistoryEnd = 0.0,
		  .mSkipsEmptyBlocks = true,
		  .mFlagsAllChannels = true})
{
}

unsigned AudioResamplerLinear::GetInputSampleCount(unsigned inNumOutput)
{
	return ToCount(std::floor((inNumOutput - 1u) * mIncrement + mPhase + 2.0));
}

float AudioResamplerLinear::InterpolateAt(Channel const& inChannel, double inPosition) const
{
	double const index = std::floor(inPosition);
	double const fraction = inPosition - index;
	if (index >= 0.0)
	{
		return Interpolate(inChannel.Sample(index), inChannel.Sample(index + 1.0), fraction);
	}
	return index == -1.0 ? Interpolate(inChannel.History(0), inChannel.Sample(0.0), fraction)
						 : Interpolate(inChannel.History(1), inChannel.History(0), fraction);
}

void AudioResamplerLinear::InterpolateInside(
	unsigned inCount, double const* inPositions, float const* inSamples, float* outSamples) const
{
	zorvaccelerate::utility::InterpolateLinear(inCount, inPositions, inSamples, outSamples);
}

void AudioResamplerLinear::RenewHistory(
	Channel const& inChannel, unsigned inNumInput, float* ioHistory, unsigned long long inStride) const
{
	ioHistory[inStride] = inNumInput > 1 ? inChannel.Sample(inNumInput - 2.0) : ioHistory[0];
	ioHistory[0] = inChannel.Sample(inNumInput - 1.0);
}

} // namespace SN
