#include "Time/Resampler/InterpolatingResampler.h"

#include "Sonaro/AudioUtilities.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace SN
{

void InterpolatingResampler::Init(
	FrameRate const& inInputRate, FrameRate const& inOutputRate, unsigned inNumChannels, bool)
{
	SetFrameRates(inInputRate, inOutputRate);
	mNumChannels = inNumChannels;
	mHistory.resize(mNumChannels * mShape.mHistoryRows);
	mInputPointers.resize(mNumChannels);
	Reset();
}

void InterpolatingResampler::Reset()
{
	mPhase = 0.0;
	std::fill(mHistory.begin(), mHistory.end(), 0.0f);
}

void InterpolatingResampler::SetFrameRates(FrameRate const& inInputRate, FrameRate const& inOutputRate)
{
	StoreRates(inInputRate, inOutputRate);
	mIncrement = static_cast<double>(static_cast<float>(GetRatio()));
}

unsigned InterpolatingResampler::GetOutputSampleCount(unsigned inNumInput)
{
	double const end = inNumInput - mPhase - mShape.mSamplesAhead;
	double count = std::floor(end / mIncrement);
	if (!(mIncrement > 0.0) || !std::isfinite(count))
	{
		return end > 0.0 ? ToCount(HUGE_VAL) : 0;
	}
	while (end > mIncrement * count)
	{
		count += 1.0;
	}
	return ToCount(count);
}

void InterpolatingResampler::Process(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, unsigned inNumInput, unsigned inNumOutput)
{
	bool const isSilent = inInput.IsSilent() && (mShape.mSkipsEmptyBlocks || inNumInput != 0);
	if (isSilent || !std::isfinite(mIncrement))
	{
		Reset();
		outOutput.Zero();
		return;
	}
	auto const channels = std::min({mNumChannels, inInput.GetNumChannels(), outOutput.GetNumChannels()});
	for (unsigned long long channel = 0; channel < channels; ++channel)
	{
		mInputPointers[channel] =
			inInput.IsChannelSilent(channel) ? GetSilenceBufferPtr(inNumInput) : inInput.GetChannel(channel);
	}
	unsigned const numOutput = std::min(inNumOutput, outOutput.GetCapacity());
	for (unsigned done = 0; done < numOutput;)
	{
		std::array<double, kPositionsAtOnce> positions;
		unsigned const count = std::min(kPositionsAtOnce, numOutput - done);
		for (unsigned i = 0; i < count; ++i)
		{
			positions[i] = mPhase;
			mPhase += mIncrement;
		}
		for (unsigned long long channel = 0; channel < channels; ++channel)
		{
			float* const out = outOutput.GetChannel(channel);
			// Samples under a flag count as zeros whatever they are, and a window may be wider than its parent.
			if (out && !inInput.IsChannelSilent(channel))
			{
				InterpolateBlock(
					count, positions.data(), GetChannel(inInput, channel), inInput.GetCapacity(), out + done);
			}
		}
		done += count;
	}
	mPhase -= inNumInput;
	if (mPhase < mShape.mHistoryEnd && inNumInput > 0)
	{
		for (unsigned long long channel = 0; channel < channels; ++channel)
		{
			RenewHistory(GetChannel(inInput, channel), inNumInput, mHistory.data() + channel, mNumChannels);
		}
	}
	FlagOutput(inInput, outOutput, channels, numOutput);
}

InterpolatingResampler::Channel InterpolatingResampler::GetChannel(
	dsp::AudioBuffer const& inInput, unsigned long long inChannel) const
{
	// What lies beyond the shared block of silence reads as zero just so.
	unsigned const capacity =
		inInput.IsChannelSilent(inChannel) ? GetMaxResampleBufferSize() : inInput.GetCapacity();
	return {mInputPointers[inChannel], capacity, mHistory.data() + inChannel, mNumChannels};
}

void InterpolatingResampler::InterpolateBlock(unsigned inCount, double const* inPositions,
	Channel const& inChannel, unsigned inCapacity, float* outSamples) const
{
	// A position is inside from the first index on, as long as the last sample of the curve lies within the memory.
	double const end = inCapacity - mShape.mSamplesAhead;
	auto const isInside = [&](double inPosition)
	{ return inPosition >= mShape.mFirstIndex && inPosition < end; };
	for (unsigned i = 0; i < inCount;)
	{
		unsigned inside = i;
		while (inside < inCount && isInside(inPositions[inside]))
		{
			++inside;
		}
		if (inside > i)
		{
			InterpolateInside(inside - i, inPositions + i, inChannel.GetSamples(), outSamples + i);
			i = inside;
		}
		else
		{
			outSamples[i] = InterpolateAt(inChannel, inPositions[i]);
			++i;
		}
	}
}

void InterpolatingResampler::FlagOutput(dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput,
	unsigned long long inChannels, unsigned inNumOutput) const
{
	auto const flagged = mShape.mFlagsAllChannels ? inInput.GetNumChannels() : inChannels;
	for (unsigned long long channel = 0; channel < flagged; ++channel)
	{
		if (inInput.IsChannelSilent(channel))
		{
			outOutput.MarkChannelSilent(channel);
		}
		else
		{
			outOutput.NoteChannelWrite(channel, channel < inChannels ? inNumOutput : 0);
		}
	}
}

} // namespace SN
