#include "zorvaudiodsp/AudioBuffer.h"

#include "zorvaccelerate/VectorArithmetic.h"
#include "zorvcore/config/Exceptions.h"

#include <algorithm>
#include <limits>
#include <string>

namespace dsp
{

namespace
{

using namespace zorvaccelerate::utility;

// Samples of padding granularity: 64 bytes.
constexpr unsigned long long kPadding = 16;

void Poison([[maybe_unused]] float* outSamples, [[maybe_unused]] unsigned inCount)
{
#ifdef ZORV_POISON_SILENCE
	// Whoever reads past a flag is heard at once.
	std::fill_n(outSamples, inCount, std::numeric_limits<float>::quiet_NaN());
#endif
}

void CheckChannelCount(unsigned long long inChannels)
{
	if (inChannels > AudioBuffer::kMaxChannels)
	{
		zorvcore::config::ThrowError(zorvcore::config::ErrorLevel::kError, __FILE__, __LINE__,
			zorvcore::eInvalidArgument, false,
			"an audio buffer has at most 64 channels, not " + std::to_string(inChannels));
	}
}

} // namespace

void AudioBuffer::Free::operator()(float* inMemory) const
{
	zorvaccelerate::utility::Free(inMemory);
}

AudioBuffer::AudioBuffer(unsigned long long inChannels, unsigned inSamples)
{
	Init(inChannels, inSamples);
}

AudioBuffer::AudioBuffer(AudioBuffer const& inOther)
{
	Init(inOther.mNumChannels, inOther.mCapacity);
	mUseSize = inOther.mUseSize;
	for (unsigned long long channel = 0; channel < mNumChannels; ++channel)
	{
		if (inOther.IsChannelSilent(channel))
		{
			mFlags.Set(channel);
		}
		else
		{
			Copy(mUseSize, inOther.mChannels[channel], mChannels[channel]);
		}
	}
}

AudioBuffer::~AudioBuffer() = default;

void AudioBuffer::Init(unsigned long long inChannels, unsigned inSamples)
{
	CheckChannelCount(inChannels);
	unsigned long long const stride = (inSamples + kPadding - 1) / kPadding * kPadding;
	unsigned long long const total = stride * inChannels;
	if (total > std::numeric_limits<unsigned>::max())
	{
		throw std::bad_alloc();
	}
	std::unique_ptr<float, Free> memory(total == 0 ? nullptr : Malloc_Float(static_cast<unsigned>(total)));
	std::vector<float*> channels(inChannels);
	for (unsigned long long channel = 0; channel < inChannels; ++channel)
	{
		channels[channel] = memory.get() + channel * stride;
	}
	zorvaccelerate::utility::Zero(static_cast<unsigned>(total), memory.get());
	mMemory = std::move(memory);
	mOwnChannels = std::move(channels);
	SetMemory(mOwnChannels.data(), inChannels, inSamples, true);
	mFlags = SilenceFlags();
}

void AudioBuffer::SetMemory(
	float** inChannels, unsigned long long inNumChannels, unsigned inCapacity, bool inGroupsOfFour)
{
	CheckChannelCount(inNumChannels);
	mChannels = inChannels;
	mNumChannels = inNumChannels;
	mCapacity = inCapacity;
	mUseSize = inCapacity;
	mGroupsOfFour = inGroupsOfFour;
}

void AudioBuffer::SetUseSize(unsigned inSamples)
{
	SetLength(inSamples);
}

bool AudioBuffer::IsSilent() const
{
	return GetSilenceFlags() == SilenceFlags::All();
}

bool AudioBuffer::IsChannelSilent(unsigned long long inChannel) const
{
	return inChannel >= mNumChannels || mFlags.Test(inChannel);
}

void AudioBuffer::MarkChannelSilent(unsigned long long inChannel)
{
	if (inChannel < mNumChannels)
	{
		mFlags.Set(inChannel);
	}
}

void AudioBuffer::SetSilenceFlags(SilenceFlags const& inFlags)
{
	ClearSilenceFlags(~inFlags);
	for (unsigned long long channel = 0; channel < mNumChannels; ++channel)
	{
		if (inFlags.Test(channel))
		{
			MarkChannelSilent(channel);
		}
	}
}

void AudioBuffer::NoteBufferWrite(unsigned inFirst, unsigned inCount)
{
	unsigned const end = inCount > mUseSize - std::min(inFirst, mUseSize) ? mUseSize : inFirst + inCount;
	if (inFirst != 0 || end < mUseSize)
	{
		SilenceFlags const silence = GetSilenceFlags();
		for (unsigned long long channel = 0; channel < mNumChannels; ++channel)
		{
			if (silence.Test(channel))
			{
				ZeroOutside(channel, std::min(inFirst, mUseSize), end);
			}
		}
	}
	ClearSilenceFlags(SilenceFlags::All());
}

void AudioBuffer::NoteChannelWrite(unsigned long long inChannel, unsigned inSamples)
{
	BeginWrite(inChannel, inSamples);
}

void AudioBuffer::ClearSilenceFlags(SilenceFlags const& inFlags)
{
	mFlags &= ~inFlags;
}

SilenceFlags AudioBuffer::GetSilenceFlags() const
{
	return mFlags | ~SilenceFlags::First(mNumChannels);
}

void AudioBuffer::Zero()
{
	mFlags = SilenceFlags::All();
	for (unsigned long long channel = 0; channel < mNumChannels; ++channel)
	{
		Poison(mChannels[channel], mUseSize);
	}
}

void AudioBuffer::ZeroBuffers()
{
	for (unsigned long long channel = 0; channel < mNumChannels; ++channel)
	{
		ZeroChannel(channel, mUseSize, false);
	}
}

void AudioBuffer::ZeroChannel(unsigned long long inChannel, unsigned inSamples, bool inMarkSilent)
{
	if (float* const samples = GetChannel(inChannel))
	{
		zorvaccelerate::utility::Zero(std::min(inSamples, mUseSize), samples);
		// What lies beyond a part is still heard.
		if (inMarkSilent && inSamples >= mUseSize)
		{
			MarkChannelSilent(inChannel);
		}
	}
}

void AudioBuffer::SetChannelZero(unsigned long long inChannel, bool inSilent)
{
	if (inSilent)
	{
		MarkChannelSilent(inChannel);
	}
	else
	{
		ClearSilenceFlags(Bit(inChannel));
	}
}

void AudioBuffer::CopyFrom(AudioBuffer const& inSource)
{
	SetUseSize(inSource.mUseSize);
	CopyFrom(inSource, inSource.mUseSize);
}

void AudioBuffer::CopyFrom(AudioBuffer const& inSource, unsigned inSamples)
{
	CopyCertainChannelsFrom(inSource, inSamples, SilenceFlags::All());
}

void AudioBuffer::CopyFrom(AudioBuffer const& inSource, unsigned long long inChannel, unsigned inSamples)
{
	CopyOneChannel(inSource, inChannel, inChannel, inSamples);
}

void AudioBuffer::CopyChannel(
	AudioBuffer const& inSource, unsigned long long inSourceChannel, unsigned long long inDestinationChannel)
{
	CopyOneChannel(inSource, inSourceChannel, inDestinationChannel, mUseSize);
}

void AudioBuffer::CopyCertainChannelsFrom(
	AudioBuffer const& inSource, unsigned inSamples, SilenceFlags const& inChannels)
{
	for (unsigned long long channel = 0; channel < mNumChannels; ++channel)
	{
		if (inChannels.Test(channel))
		{
			CopyOneChannel(inSource, channel, channel, inSamples);
		}
	}
}

void AudioBuffer::CopyOneChannel(AudioBuffer const& inSource, unsigned long long inSourceChannel,
	unsigned long long inDestinationChannel, unsigned inCount)
{
	if (!GetChannel(inDestinationChannel))
	{
		return;
	}
	unsigned const count = std::min({inCount, mUseSize, inSource.mUseSize});
	if (!inSource.IsChannelSilent(inSourceChannel))
	{
		float const* const source = inSource.mChannels[inSourceChannel];
		Copy(count, source, BeginWrite(inDestinationChannel, count));
	}
	else
	{
		Silence(inDestinationChannel, count);
	}
}

void AudioBuffer::Silence(unsigned long long inChannel, unsigned inCount)
{
	if (inCount == mUseSize)
	{
		MarkChannelSilent(inChannel);
	}
	else if (!IsChannelSilent(inChannel))
	{
		ZeroChannel(inChannel, inCount, false);
	}
}

void AudioBuffer::CopyFromScale(AudioBuffer const& inSource, float inGain)
{
	unsigned const count = std::min(mUseSize, inSource.mUseSize);
	for (unsigned long long channel = 0; channel < mNumChannels; ++channel)
	{
		if (inGain == 0.0f || inSource.IsChannelSilent(channel) || !GetChannel(channel))
		{
			Silence(channel, count);
			continue;
		}
		float const* const source = inSource.mChannels[channel];
		MulConstant(count, source, inGain, BeginWrite(channel, count));
	}
}

void AudioBuffer::Mix(AudioBuffer const& inSource)
{
	unsigned const count = std::min(mUseSize, inSource.mUseSize);
	unsigned long long const channels = std::min(mNumChannels, inSource.mNumChannels);
	SilenceFlags const sourceSilence = inSource.GetSilenceFlags();
	SilenceFlags const silence = GetSilenceFlags();
	for (unsigned long long channel = 0; channel < channels; ++channel)
	{
		if (sourceSilence.Test(channel) || !GetChannel(channel))
		{
			continue;
		}
		float const* const source = inSource.mChannels[channel];
		if (silence.Test(channel))
		{
			Copy(count, source, BeginWrite(channel, count));
		}
		else
		{
			Add(count, mChannels[channel], source, mChannels[channel]);
		}
	}
}

AudioBuffer& AudioBuffer::operator*=(float inGain)
{
	SilenceFlags const silence = GetSilenceFlags();
	for (unsigned long long channel = 0; channel < mNumChannels; ++channel)
	{
		if (!silence.Test(channel))
		{
			MulConstant_InPlace(mUseSize, mChannels[channel], inGain);
		}
	}
	return *this;
}

void AudioBuffer::Reverse()
{
	for (unsigned long long channel = 0; channel < mNumChannels; ++channel)
	{
		if (!IsChannelSilent(channel))
		{
			Reverse_InPlace(mUseSize, mChannels[channel]);
		}
	}
}

SilenceFlags AudioBuffer::Bit(unsigned long long inChannel)
{
	SilenceFlags flags;
	flags.Set(inChannel);
	return flags;
}

float* AudioBuffer::BeginWrite(unsigned long long inChannel, unsigned inCount)
{
	if (inChannel < mNumChannels && IsChannelSilent(inChannel))
	{
		if (inCount < mUseSize)
		{
			ZeroOutside(inChannel, 0, inCount);
		}
		ClearSilenceFlags(Bit(inChannel));
	}
	return GetChannel(inChannel);
}

void AudioBuffer::ZeroOutside(unsigned long long inChannel, unsigned inFirst, unsigned inEnd)
{
	float* const samples = GetChannel(inChannel);
	if (samples && inFirst > 0)
	{
		zorvaccelerate::utility::Zero(inFirst, samples);
	}
	if (samples && inEnd < mUseSize)
	{
		zorvaccelerate::utility::Zero(mUseSize - inEnd, samples + inEnd);
	}
}

} // namespace dsp
