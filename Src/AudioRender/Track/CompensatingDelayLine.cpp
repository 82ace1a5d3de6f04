#include "AudioRender/Track/CompensatingDelayLine.h"

#include "zorvaccelerate/VectorArithmetic.h"

#include <algorithm>
#include <bit>
#include <stdexcept>

namespace SN
{

using namespace zorvaccelerate::utility;

namespace
{

constexpr unsigned long long kLongestRing = 1ull << 31;

} // namespace

void CompensatingDelayLine::Init(unsigned inMaxSamples, unsigned inNumChannels)
{
	*this = CompensatingDelayLine();
	mMaxSamples = inMaxSamples;
	mNumChannels = inNumChannels;
}

void CompensatingDelayLine::SetDelay(unsigned inSamples)
{
	if (inSamples == 0)
	{
		return;
	}
	// Room for the delay and a whole block, so that no block overwrites what it is about to read.
	unsigned long long const room = std::max(1ull, 0ull + mMaxSamples + std::max(mMaxSamples, inSamples));
	if (room > kLongestRing)
	{
		throw std::length_error("vector too long");
	}
	auto const length = static_cast<unsigned>(std::bit_ceil(room));
	mOutput = std::make_shared<dsp::AudioBuffer>(mNumChannels, mMaxSamples);
	mRing = std::make_shared<dsp::AudioBuffer>(mNumChannels, length);
	mRing->ZeroBuffers();
	mWriteIndex = 0;
	mReadIndex = length - inSamples;
	mMask = length - 1;
}

dsp::AudioBuffer& CompensatingDelayLine::Process(dsp::AudioBuffer& ioBuffer)
{
	if (!IsActive())
	{
		return ioBuffer;
	}
	dsp::AudioBuffer& output = mInPlace ? ioBuffer : *mOutput;
	unsigned const count = std::min(ioBuffer.GetUseSize(), mMaxSamples);
	auto const channels = std::min<unsigned long long>(mNumChannels, ioBuffer.GetNumChannels());
	for (unsigned long long channel = 0; channel < channels; ++channel)
	{
		float const* const input = ioBuffer.IsChannelSilent(channel) ? nullptr : ioBuffer.GetChannel(channel);
		ProcessChannel(input, output.GetChannel(channel), channel, count);
		output.NoteChannelWrite(channel, count);
	}
	for (unsigned long long channel = channels; mInPlace && channel < ioBuffer.GetNumChannels(); ++channel)
	{
		// These channels are beyond the line's width; their flags go like those of all others.
		ioBuffer.NoteChannelWrite(channel, 0);
	}
	mWriteIndex = (mWriteIndex + count) & mMask;
	mReadIndex = (mReadIndex + count) & mMask;
	return output;
}

void CompensatingDelayLine::ProcessChannel(
	float const* inInput, float* outOutput, unsigned long long inChannel, unsigned inCount)
{
	float* const ring = mRing->GetChannel(inChannel);
	unsigned const length = mMask + 1;
	// The whole block goes in before it is read: the ring holds both, and the output may be the input.
	for (unsigned done = 0; done < inCount;)
	{
		unsigned const write = (mWriteIndex + done) & mMask;
		unsigned const run = std::min(inCount - done, length - write);
		if (inInput)
		{
			Copy(run, inInput + done, ring + write);
		}
		else
		{
			Zero(run, ring + write);
		}
		done += run;
	}
	// Nothing is read into a window that is wider than its parent.
	for (unsigned done = 0; outOutput && done < inCount;)
	{
		unsigned const read = (mReadIndex + done) & mMask;
		unsigned const run = std::min(inCount - done, length - read);
		Copy(run, ring + read, outOutput + done);
		done += run;
	}
}

} // namespace SN
