#include "Time/Resampler/AudioResamplerCubic.h"

#include "zorvaccelerate/Resampling.h"

#include <algorithm>
#include <cmath>

namespace SN
{

namespace
{

// Where the weights for a position start; inFraction is 0 to 1, and 1 wraps around to 0.
unsigned GetRow(double inFraction)
{
	constexpr unsigned kSteps = CubicCoefficientTable::kSteps;
	return (static_cast<unsigned>(inFraction * kSteps) & (kSteps - 1)) * 4;
}

float Interpolate(float const* inWeights, float inS0, float inS1, float inS2, float inS3)
{
	return inS0 * inWeights[0] + inS1 * inWeights[1] + inS2 * inWeights[2] + inS3 * inWeights[3];
}

} // namespace

AudioResamplerCubic::AudioResamplerCubic()
	: InterpolatingResampler({.mHistoryRows = 4,
		  .mFirstIndex = 1.0,
		  .mSamplesAhead = 2.0,
		  .mHistoryEnd = 1.0,
		  .mSkipsEmptyBlocks = false,
		  .mFlagsAllChannels = false}),
	  mTable(CubicCoefficientTable::GetShared())
{
}

unsigned AudioResamplerCubic::GetInputSampleCount(unsigned inNumOutput)
{
	return ToCount(std::floor((inNumOutput - 1.0) * mIncrement + mPhase + 3.0));
}

float AudioResamplerCubic::InterpolateAt(Channel const& inChannel, double inPosition) const
{
	double const index = std::floor(inPosition);
	float const* const weights = mTable->GetCoefficients() + GetRow(inPosition - index);
	auto const old = [&](unsigned inRow) { return inChannel.History(inRow); };
	auto const sample = [&](double inIndex) { return inChannel.Sample(inIndex); };
	if (index >= 1.0)
	{
		return Interpolate(
			weights, sample(index - 1.0), sample(index), sample(index + 1.0), sample(index + 2.0));
	}
	if (index == -3.0)
	{
		return Interpolate(weights, old(3), old(2), old(1), old(0));
	}
	if (index == -2.0)
	{
		return Interpolate(weights, old(2), old(1), old(0), sample(0.0));
	}
	if (index == -1.0)
	{
		return Interpolate(weights, old(1), old(0), sample(0.0), sample(1.0));
	}
	return Interpolate(weights, old(0), sample(0.0), sample(1.0), sample(2.0));
}

void AudioResamplerCubic::InterpolateInside(
	unsigned inCount, double const* inPositions, float const* inSamples, float* outSamples) const
{
	zorvaccelerate::utility::InterpolateCubic(inCount, inPositions, mTable->GetCoefficients(),
		CubicCoefficientTable::kSteps, inSamples, outSamples);
}

void AudioResamplerCubic::RenewHistory(
	Channel const& inChannel, unsigned inNumInput, float* ioHistory, unsigned long long inStride) const
{
	float const old0 = ioHistory[0];
	float const old1 = inNumInput == 1 ? old0 : ioHistory[inStride];
	unsigned const fresh = std::min(inNumInput, 4u);
	for (unsigned row = 0; row < 4; ++row)
	{
		// After a block of one sample all older rows hold what was the latest; after two or three samples
		// the old rows move down.
		float const old = row == fresh ? old0 : old1;
		ioHistory[row * inStride] = row < fresh ? inChannel.Sample(inNumInput - 1.0 - row) : old;
	}
}

} // namespace SN
