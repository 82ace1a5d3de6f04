#include "zorvaudiodsp/AudioSubBuffer.h"

#include <algorithm>

namespace dsp
{

void AudioSubBuffer::Init(unsigned long long inChannels)
{
	// Without channels to show until there is something to aim at.
	SetMemory(nullptr, inChannels, 0, false);
	mParent = nullptr;
	mFlags = SilenceFlags();
}

void AudioSubBuffer::Assign(AudioBuffer& ioParent, unsigned inOffset)
{
	mParent = &ioParent;
	unsigned const offset = std::min(inOffset, ioParent.GetUseSize());
	Aim(offset, ioParent.GetUseSize() - offset);
	SetLength(GetCapacity());
}

void AudioSubBuffer::ShiftOffset(unsigned inSamples)
{
	if (mParent)
	{
		unsigned const samples = std::min(inSamples, GetCapacity());
		unsigned const useSize = GetUseSize() - std::min(samples, GetUseSize());
		Aim(mOffset + samples, GetCapacity() - samples);
		SetLength(useSize);
	}
}

void AudioSubBuffer::Aim(unsigned inOffset, unsigned inCapacity)
{
	mOffset = inOffset;
	float* const* const parentChannels = mParent->mChannels;
	unsigned long long const shared = parentChannels ? std::min(mNumChannels, mParent->mNumChannels) : 0;
	for (unsigned long long channel = 0; channel < shared; ++channel)
	{
		float* const samples = parentChannels[channel];
		mWindowChannels[channel] = samples ? samples + inOffset : nullptr;
	}
	for (unsigned long long channel = shared; channel < mNumChannels; ++channel)
	{
		mWindowChannels[channel] = nullptr;
	}
	mChannels = mWindowChannels;
	mFlags = SilenceFlags();
	mCapacity = inCapacity;
	mUseSize = inCapacity;
}

void AudioSubBuffer::SetUseSize(unsigned inSamples)
{
	if (inSamples > GetUseSize())
	{
		// What comes in may be audible.
		mFlags = SilenceFlags();
	}
	SetLength(inSamples);
}

bool AudioSubBuffer::IsChannelSilent(unsigned long long inChannel) const
{
	return !GetChannel(inChannel) || IsFlagged(inChannel) || mParent->IsChannelSilent(inChannel);
}

void AudioSubBuffer::MarkChannelSilent(unsigned long long inChannel)
{
	if (!GetChannel(inChannel) || mParent->IsChannelSilent(inChannel))
	{
		return;
	}
	mFlags.Set(inChannel);
	if (mOffset == 0 && GetUseSize() >= mParent->GetUseSize())
	{
		mParent->MarkChannelSilent(inChannel);
	}
	else
	{
		ZeroChannel(inChannel, GetUseSize(), false);
	}
}

void AudioSubBuffer::ClearSilenceFlags(SilenceFlags const& inFlags)
{
	if (GetUseSize() == 0)
	{
		// Nothing audible can have come in.
		return;
	}
	mFlags &= ~inFlags;
	SilenceFlags const flagged = inFlags & GetParentFlags() & SilenceFlags::First(GetNumChannels());
	if (!mParent || !flagged.Any())
	{
		return;
	}
	bool const coversAll = mOffset == 0 && GetUseSize() >= mParent->GetUseSize();
	for (unsigned long long channel = 0; !coversAll && channel < GetNumChannels(); ++channel)
	{
		if (flagged.Test(channel))
		{
			mParent->ZeroOutside(channel, mOffset, mOffset + GetUseSize());
		}
	}
	mParent->ClearSilenceFlags(flagged);
}

SilenceFlags AudioSubBuffer::GetSilenceFlags() const
{
	return mFlags | GetParentFlags() | ~SilenceFlags::First(GetNumChannels());
}

// Channels that the parent lacks read as set.
SilenceFlags AudioSubBuffer::GetParentFlags() const
{
	return mParent ? mParent->GetSilenceFlags() : SilenceFlags::All();
}

void AudioSubBuffer::Zero()
{
	SilenceFlags const audible = ~GetParentFlags() & SilenceFlags::First(GetNumChannels());
	for (unsigned long long channel = 0; audible.Any() && channel < GetNumChannels(); ++channel)
	{
		if (audible.Test(channel))
		{
			MarkChannelSilent(channel);
		}
	}
}

} // namespace dsp
