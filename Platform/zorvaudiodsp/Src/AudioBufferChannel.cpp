#include "zorvaudiodsp/AudioBufferChannel.h"

#include <algorithm>

namespace dsp
{

void AudioBufferChannel::Assign(AudioBuffer& ioParent, unsigned long long inChannel)
{
	mViewedChannel = ioParent.GetChannel(inChannel);
	mParent = mViewedChannel ? &ioParent : nullptr;
	mParentChannel = inChannel;
	SetMemory(&mViewedChannel, 1, ioParent.GetCapacity(), ioParent.CanProcessInGroupsOfFour());
	SetLength(ioParent.GetUseSize());
}

void AudioBufferChannel::AssignForReading(AudioBuffer const& inParent, unsigned long long inChannel)
{
	Assign(const_cast<AudioBuffer&>(inParent), inChannel);
}

bool AudioBufferChannel::IsChannelSilent(unsigned long long inChannel) const
{
	return inChannel != 0 || !mParent || mParent->IsChannelSilent(mParentChannel);
}

void AudioBufferChannel::MarkChannelSilent(unsigned long long inChannel)
{
	if (inChannel == 0 && mParent)
	{
		mParent->MarkChannelSilent(mParentChannel);
	}
}

void AudioBufferChannel::ClearSilenceFlags(SilenceFlags const& inFlags)
{
	if (inFlags.Test(0) && mParent && mParent->IsChannelSilent(mParentChannel))
	{
		// The parent may be longer than this view.
		mParent->ZeroOutside(mParentChannel, 0, std::min(GetUseSize(), mParent->GetUseSize()));
		mParent->ClearSilenceFlags(Bit(mParentChannel));
	}
}

SilenceFlags AudioBufferChannel::GetSilenceFlags() const
{
	SilenceFlags flags = SilenceFlags::All();
	flags.Assign(0, IsChannelSilent(0));
	return flags;
}

} // namespace dsp
