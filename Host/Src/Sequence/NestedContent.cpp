#include "NestedContent.h"

#include "Sonaro/PrefetchRange.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>

namespace SonaroHost::Sequence
{

NestedContent::NestedContent(SN::InterfaceRef<SN::IAudioGenerator> const& inSequence,
	SN::InterfaceRef<SN::IAudioRenderContext> const& inContext, SN::FrameRate const& inFrameRate,
	unsigned inChannels, ContentWindow const& inWindow)
	: mSequence(inSequence),
	  mContext(inContext),
	  mFrameRate(inFrameRate),
	  mChannels(inChannels),
	  mWindow(inWindow)
{
}

SN::InterfaceRef<SN::IAudioGenerator> NestedContent::Clone()
{
	return zorvcore::classref::MakeObject<NestedContent>(
		mSequence->Clone(), mContext, mFrameRate, mChannels, mWindow);
}

SN::TickTime NestedContent::GetDelay()
{
	SN::TickTime const settling(mWindow.mSettlingFrames, mFrameRate);
	return mContext->IsDelayCompensationDisabled() ? SN::kTimeZero : mSequence->GetDelay() + settling;
}

void NestedContent::Preroll(SN::TickTime const& inStartTime, bool inReverse)
{
	SN::TickTime const first = (inStartTime - mWindow.mPrerollLead) * mWindow.mSpeed;
	SN::TickTime const start = MapRun(first.ToFrame64(mFrameRate), 0);
	bool const isPlayback = mContext->IsPrefetchEnabled() && !mContext->IsImmediateRender();
	if (isPlayback || MapDirection(inReverse) || mContext->IsDelayCompensationDisabled())
	{
		mSequence->Preroll(start, MapDirection(inReverse));
		return;
	}
	SN::TickTime const settling(mWindow.mSettlingFrames, mFrameRate);
	mSequence->Preroll(start - settling, false);
	Settle(start - settling);
}

void NestedContent::Settle(SN::TickTime const& inTime)
{
	if (mWindow.mSettlingFrames == 0)
	{
		return;
	}
	dsp::AudioBuffer discarded(mChannels, std::max(mContext->GetMaxBlockSize(), 1u));
	SN::TickTime time = inTime;
	for (std::int64_t remaining = mWindow.mSettlingFrames; remaining > 0;)
	{
		std::int64_t const count = std::min<std::int64_t>(remaining, discarded.GetCapacity());
		discarded.SetUseSize(static_cast<unsigned>(count));
		mSequence->GetAudioData(time, discarded, false);
		time.AddFrames(count, mFrameRate);
		remaining -= count;
	}
}

void NestedContent::FillInitialDelay(
	SN::TickTime const& inStartTime, SN::TickTime const& inDelayTime, bool inReverse, bool inForceCompletion)
{
	mSequence->FillInitialDelay(MapRun(inStartTime.ToFrame64(mFrameRate), 0), inDelayTime,
		MapDirection(inReverse), inForceCompletion);
}

void NestedContent::AccumulatePrefetchRequests(
	SN::PrefetchRange const& inRange, SN::PrefetchType inType, SN::PrefetchRequestAccumulator& inAccumulator)
{
	std::int64_t const first = inRange.mStart.ToFrame64(mFrameRate);
	// Ends between two frames count whole.
	std::int64_t const count = (inRange.mEnd - inRange.mStart).ToFrame64(mFrameRate) + 2;
	SN::TickTime const start = MapRun(first, count);
	mSequence->AccumulatePrefetchRequests(
		{start, start + SN::TickTime(count, mFrameRate)}, inType, inAccumulator);
}

void NestedContent::GetAudioData(SN::TickTime const& inTime, dsp::AudioBuffer& ioBuffer, bool inReverse)
{
	mSequence->GetAudioData(
		MapRun(inTime.ToFrame64(mFrameRate), ioBuffer.GetUseSize()), ioBuffer, MapDirection(inReverse));
}

SN::TickTime NestedContent::MapRun(std::int64_t inFirstFrame, std::int64_t inCount) const
{
	std::int64_t const first = mWindow.mIsBackwards ? mWindow.mFirstFrame + 1 - inFirstFrame - inCount
													: mWindow.mFirstFrame + inFirstFrame;
	return {first, mFrameRate};
}

void* NestedContent::QueryMap(SN::Guid const& inIdentifier)
{
	void* const found = zorvcore::classref::QueryInterfaces<SN::IAudioGenerator>(this, inIdentifier);
	return found ? found : Unknown::QueryMap(inIdentifier);
}

} // namespace SonaroHost::Sequence
