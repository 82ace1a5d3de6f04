#include "zorvaudiodsp/AudioDelayBuffer.h"

#include "zorvaccelerate/VectorArithmetic.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace dsp
{

namespace
{

using namespace zorvaccelerate::utility;

} // namespace

void AudioDelayBuffer::Init(unsigned long long inChannels, unsigned inDelaySamples, unsigned inMaxBlockSize)
{
	if (0ull + inDelaySamples + inMaxBlockSize > std::numeric_limits<unsigned>::max() / 2)
	{
		throw std::length_error("vector too long");
	}
	mDelay = inDelaySamples;
	mMaxBlockSize = inMaxBlockSize;
	mRing.Init(inChannels, inDelaySamples + inMaxBlockSize);
	Reset();
}

void AudioDelayBuffer::Reset()
{
	mRing.ZeroBuffers();
	mWritePosition = 0;
	mSilentSamples.fill(mRing.GetCapacity());
}

void AudioDelayBuffer::Write(AudioBuffer const& inBlock)
{
	unsigned const length = mRing.GetCapacity();
	unsigned const count = std::min(inBlock.GetUseSize(), mMaxBlockSize);
	// The ring may end within the block.
	unsigned const head = std::min(count, length - mWritePosition);
	for (unsigned long long channel = 0; channel < mRing.GetNumChannels(); ++channel)
	{
		float* const ring = mRing.GetChannel(channel);
		unsigned& silent = mSilentSamples[channel];
		if (!inBlock.IsChannelSilent(channel))
		{
			float const* const in = inBlock.GetChannel(channel);
			Copy(head, in, ring + mWritePosition);
			Copy(count - head, in + head, ring);
			silent = count == 0 ? silent : 0;
		}
		else if (silent < length)
		{
			zorvaccelerate::utility::Zero(head, ring + mWritePosition);
			zorvaccelerate::utility::Zero(count - head, ring);
			silent += std::min(count, length - silent);
		}
	}
	mWritePosition = length == 0 ? 0 : (mWritePosition + count) % length;
}

void AudioDelayBuffer::Read(AudioBuffer& outBlock) const
{
	unsigned const length = mRing.GetCapacity();
	unsigned const count = std::min(outBlock.GetUseSize(), mMaxBlockSize);
	unsigned const back = count + mDelay;
	unsigned const first = mWritePosition >= back ? mWritePosition - back : mWritePosition + length - back;
	unsigned const head = std::min(count, length - first);
	for (unsigned long long channel = 0; channel < outBlock.GetNumChannels(); ++channel)
	{
		if (channel >= mRing.GetNumChannels() || mSilentSamples[channel] >= back)
		{
			outBlock.MarkChannelSilent(channel);
			continue;
		}
		float const* const ring = mRing.GetChannel(channel);
		float* const out = outBlock.GetChannel(channel);
		if (!out)
		{
			// A window that is wider than its parent.
			continue;
		}
		Copy(head, ring + first, out);
		Copy(count - head, ring, out + head);
		if (count < outBlock.GetUseSize())
		{
			zorvaccelerate::utility::Zero(outBlock.GetUseSize() - count, out + count);
		}
		outBlock.NoteChannelWrite(channel, outBlock.GetUseSize());
	}
}

} // namespace dsp
