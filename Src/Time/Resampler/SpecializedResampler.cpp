#include "Time/Resampler/SpecializedResampler.h"

#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace SN
{

namespace
{

// From this position on, no output of the next block reaches before its start.
constexpr long long kHistoryEnd = 12;

long long FloorDivide(long long inPosition, unsigned inParts)
{
	long long const parts = inParts;
	return (inPosition - (inPosition % parts + parts) % parts) / parts;
}

} // namespace

void SpecializedResampler::Init(unsigned inNumChannels)
{
	mNumChannels = inNumChannels;
	mHistory.resize(mNumChannels * kHistoryRows);
	Reset(0);
}

void SpecializedResampler::Reset(unsigned long long inPosition)
{
	// The first output lies one sample into the block.
	mPosition = static_cast<long long>(mShape.mStep * inPosition % mShape.mParts + mShape.mParts);
	std::fill(mHistory.begin(), mHistory.end(), 0.0f);
}

unsigned SpecializedResampler::GetInputSampleCount(unsigned inNumOutput)
{
	double const parts = mShape.mParts;
	// The difference and its product wrap around.
	double const advance = mShape.mStep * (inNumOutput - 1u);
	double const count = std::floor(advance / parts + static_cast<double>(mPosition) / parts + parts);
	return static_cast<unsigned>(
		std::clamp(count, 0.0, static_cast<double>(std::numeric_limits<unsigned>::max())));
}

void SpecializedResampler::Process(
	dsp::AudioBuffer const& inInput, dsp::AudioBuffer& outOutput, unsigned inNumInput, unsigned inNumOutput)
{
	if (inInput.IsSilent())
	{
		std::fill(mHistory.begin(), mHistory.end(), 0.0f);
		mPosition = 0;
		outOutput.Zero();
		return;
	}
	auto const channels = std::min({mNumChannels, inInput.GetNumChannels(), outOutput.GetNumChannels()});
	unsigned const numOutput = std::min(inNumOutput, outOutput.GetCapacity());
	long long const end = mPosition + static_cast<long long>(mShape.mStep) * numOutput -
						  static_cast<long long>(mShape.mParts) * inNumInput;
	for (unsigned long long index = 0; index < channels; ++index)
	{
		// Samples under a flag count as zeros whatever they are.
		bool const isSilent = inInput.IsChannelSilent(index);
		Channel const channel{
			inInput.GetChannel(index), isSilent ? 0 : inInput.GetUseSize(), mHistory.data() + index};
		float* const outputs = outOutput.GetChannel(index);
		if (isSilent)
		{
			outOutput.MarkChannelSilent(index);
		}
		else
		{
			FilterChannel(channel, numOutput, outputs);
			outOutput.NoteChannelWrite(index, numOutput);
		}
		if (end < kHistoryEnd)
		{
			RenewHistory(channel, inNumInput);
		}
	}
	mPosition = end;
}

void SpecializedResampler::FilterChannel(
	Channel const& inChannel, unsigned inNumOutput, float* outOutputs) const
{
	// Whether all taps lie in the block.
	auto const isInside = [&](unsigned inOutput)
	{
		long long const first = IndexOf(inOutput) - kTapsBefore;
		return first >= 0 && first + kMostTaps <= inChannel.mEnd;
	};
	unsigned first = 0;
	while (first < inNumOutput && !isInside(first))
	{
		++first;
	}
	unsigned last = first;
	while (last < inNumOutput && isInside(last))
	{
		++last;
	}
	FilterEdge(inChannel, 0, first, outOutputs);
	for (unsigned output = first; output < std::min(first + mShape.mParts, last); ++output)
	{
		PhaseOf(output)((last - output + mShape.mParts - 1) / mShape.mParts,
			inChannel.mSamples + (IndexOf(output) - kTapsBefore), outOutputs + output);
	}
	FilterEdge(inChannel, last, inNumOutput, outOutputs);
}

void SpecializedResampler::FilterEdge(
	Channel const& inChannel, unsigned inFirst, unsigned inEnd, float* outOutputs) const
{
	for (unsigned output = inFirst; output < inEnd; ++output)
	{
		std::array<float, kMostTaps> taps;
		for (unsigned tap = 0; tap < kMostTaps; ++tap)
		{
			taps[tap] = SampleAt(inChannel, IndexOf(output) - kTapsBefore + tap);
		}
		PhaseOf(output)(1, taps.data(), outOutputs + output);
	}
}

float SpecializedResampler::SampleAt(Channel const& inChannel, long long inIndex) const
{
	if (inIndex >= 0)
	{
		return inIndex < inChannel.mEnd ? inChannel.mSamples[inIndex] : 0.0f;
	}
	return inIndex < -static_cast<long long>(kHistoryRows)
			   ? 0.0f
			   : inChannel.mHistory[static_cast<unsigned long long>(-1 - inIndex) * mNumChannels];
}

void SpecializedResampler::RenewHistory(Channel const& inChannel, unsigned inNumInput) const
{
	// From the oldest on: after a short block a row takes what stood in a newer one.
	for (unsigned row = kHistoryRows; row-- > 0;)
	{
		inChannel.mHistory[row * mNumChannels] =
			SampleAt(inChannel, static_cast<long long>(inNumInput) - 1 - row);
	}
}

long long SpecializedResampler::IndexOf(unsigned inOutput) const
{
	return FloorDivide(mPosition + static_cast<long long>(mShape.mStep) * inOutput, mShape.mParts);
}

SpecializedResampler::FilterPhase SpecializedResampler::PhaseOf(unsigned inOutput) const
{
	long long const position = mPosition + static_cast<long long>(mShape.mStep) * inOutput;
	return mShape
		.mPhases[static_cast<std::size_t>(position - FloorDivide(position, mShape.mParts) * mShape.mParts)];
}

} // namespace SN
