#include "FadeItem.h"

#include "Sonaro/PrefetchRange.h"
#include "zorvaudiodsp/AudioSubBuffer.h"

#include <algorithm>

namespace SonaroHost::Sequence
{

void ApplyFade(FadeRun const& inFade, dsp::AudioBuffer& ioBuffer)
{
	std::int64_t const count = ioBuffer.GetUseSize();
	for (std::int64_t i = 0; i < count && !ioBuffer.IsSilent(); ++i)
	{
		float const gain = GetFadeGain(inFade.mShape, inFade.mFirst + inFade.mStep * i, inFade.mFrames);
		for (unsigned long long channel = 0; channel < ioBuffer.GetNumChannels(); ++channel)
		{
			if (!ioBuffer.IsChannelSilent(channel))
			{
				float& sample = ioBuffer.GetChannel(channel)[i];
				sample = gain == 0.0f ? 0.0f : sample * gain;
			}
		}
	}
}

FadeItem::FadeItem(Settings const& inSettings)
	: Implements({inSettings.mOutgoing.mItem, inSettings.mIncoming.mItem}),
	  mSettings(inSettings)
{
}

template <class Use>
void FadeItem::ForEachItem(Use const& inUse)
{
	for (Side const* const side : {&mSettings.mOutgoing, &mSettings.mIncoming})
	{
		if (side->mItem)
		{
			inUse(*side->mItem, GetShift(*side));
		}
	}
}

SN::TickTime FadeItem::GetShift(Side const& inSide) const
{
	return {mSettings.mFirstFrame - inSide.mItemStart, mSettings.mFrameRate};
}

SN::InterfaceRef<SN::IAudioGenerator> FadeItem::Clone()
{
	Settings settings = mSettings;
	settings.mScratch = MakeAlike(*mSettings.mScratch);
	for (Side* const side : {&settings.mOutgoing, &settings.mIncoming})
	{
		if (side->mItem)
		{
			side->mItem = side->mItem->Clone();
		}
	}
	auto const clone = zorvcore::classref::MakeObject<FadeItem>(settings);
	clone->Init(mStart, mEnd, mTrackItemStart, mSettings.mFrameRate);
	return clone;
}

void FadeItem::Preroll(SN::TickTime const& inStartTime, bool inReverse)
{
	ForEachItem([&](SN::IAudioGenerator& ioItem, SN::TickTime const& inShift)
		{ ioItem.Preroll(inStartTime + inShift, inReverse); });
}

void FadeItem::AccumulatePrefetchRequests(
	SN::PrefetchRange const& inRange, SN::PrefetchType inType, SN::PrefetchRequestAccumulator& inAccumulator)
{
	ForEachItem([&](SN::IAudioGenerator& ioItem, SN::TickTime const& inShift)
		{ ioItem.AccumulatePrefetchRequests(inRange + inShift, inType, inAccumulator); });
}

void FadeItem::GetAudioData(SN::TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse)
{
	Read(mSettings.mOutgoing, false, inTime, inReverse, ioBuffer);
	if (!mSettings.mIncoming.mItem)
	{
		return;
	}
	dsp::AudioBuffer& scratch = *mSettings.mScratch;
	scratch.SetUseSize(ioBuffer.GetUseSize());
	dsp::AudioSubBuffer window;
	window.Init(scratch.GetNumChannels());
	window.Assign(scratch, 0);
	Read(mSettings.mIncoming, true, inTime, inReverse, window);
	ioBuffer.Mix(window);
}

void FadeItem::Read(Side const& inSide, bool inIsIncoming, SN::TickTime const& inTime, bool inReverse,
	dsp::AudioBuffer& outBuffer)
{
	outBuffer.Zero();
	if (!inSide.mItem)
	{
		return;
	}
	inSide.mItem->GetAudioData(inTime + GetShift(inSide), outBuffer, inReverse);
	std::int64_t const first = inTime.ToFrame64(mSettings.mFrameRate);
	std::int64_t const begin = inReverse ? first + outBuffer.GetUseSize() - 1 : first;
	std::int64_t const step = inReverse ? -1 : 1;
	// The side's own rise is turned round where it goes out.
	ApplyFade(inIsIncoming ? FadeRun{inSide.mShape, mSettings.mFrames, begin, step}
						   : FadeRun{inSide.mShape, mSettings.mFrames, mSettings.mFrames - begin, -step},
		outBuffer);
}

void FadeItem::Init(SN::TickTime const& inStartTime, SN::TickTime const& inEndTime,
	SN::TickTime const& inTrackItemStartTime, SN::FrameRate const& inFrameRate)
{
	auto const align = [&](SN::TickTime inTime)
	{
		inTime.AlignToFrame(inFrameRate);
		return inTime;
	};
	mStart = align(inStartTime);
	mEnd = align(inEndTime);
	mTrackItemStart = align(inTrackItemStartTime);
}

} // namespace SonaroHost::Sequence
