#include "NestedContent.h"

#include "Sonaro/PrefetchRange.h"
#include "zorvaudiodsp/AudioBuffer.h"

#include <algorithm>
#include <cstdlib>

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
	bool const isReverse = MapDirection(inReverse);
	std::int64_t const settling = mWindow.mSettlingFrames + (isReverse ? mWindow.mAheadFrames : 0);
	if (isPlayback || settling == 0 || mContext->IsDelayCompensationDisabled())
	{
		mSequence->Preroll(start, isReverse);
		return;
	}
	SN::TickTime const span(settling, mFrameRate);
	mSequence->Preroll(isReverse ? start + span : start - span, isReverse);
	Settle(start, isReverse ? -settling : settling);
}

void NestedContent::Settle(SN::TickTime const& inTime, std::int64_t inFrames)
{
	dsp::AudioBuffer discarded(mChannels, std::max(mContext->GetMaxBlockSize(), 1u));
	bool const isReverse = inFrames < 0;
	for (std::int64_t remaining = std::abs(inFrames); remaining > 0;)
	{
		std::int64_t const count = std::min<std::int64_t>(remaining, discarded.GetCapacity());
		SN::TickTime const time = isReverse ? inTime + SN::TickTime(remaining - count, mFrameRate)
											: inTime - SN::TickTime(remaining, mFrameRate);
		discarded.SetUseSize(static_cast<unsigned>(count));
		mSequence->GetAudioData(time, discarded, isReverse);
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
