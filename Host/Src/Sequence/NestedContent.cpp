#include "NestedContent.h"

#include "ControlBlocks.h"
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
	  mNestingDepth(inContext->GetNestingDepth()),
	  mWindow(inWindow)
{
	if (mWindow.mAheadFrames + mWindow.mSettlingFrames > 0)
	{
		mDiscarded.Init(inChannels, std::max(mContext->GetMaxBlockSize(), 1u));
	}
}

SN::InterfaceRef<SN::IAudioGenerator> NestedContent::Clone()
{
	auto const clone = zorvcore::classref::MakeObject<NestedContent>(mSequence->Clone(), mContext, mFrameRate,
		static_cast<unsigned>(mDiscarded.GetNumChannels()), mWindow);
	clone->mNestingDepth = mNestingDepth;
	return clone;
}

bool NestedContent::HasHistory()
{
	if (!mHasHistory)
	{
		mHasHistory = mSequence->HasHistory();
	}
	return *mHasHistory;
}

SN::TickTime NestedContent::GetDelay()
{
	if (mContext->IsDelayCompensationDisabled())
	{
		return SN::kTimeZero;
	}
	return {
		ToControlBlocks(mSequence->GetDelay().ToFrame64(mFrameRate) + mWindow.mSettlingFrames), mFrameRate};
}

void NestedContent::Preroll(SN::TickTime const& inStartTime, bool inReverse)
{
	SN::TickTime const first = (inStartTime - mWindow.mPrerollLead) * mWindow.mSpeed;
	std::int64_t const frame = first.ToFrame64(mFrameRate);
	mNextFrame.reset();
	mFilledFrom.reset();
	mIsReset = false;
	bool const isReverse = MapDirection(inReverse);
	if (mContext->IsPrefetchEnabled() && !mContext->IsImmediateRender())
	{
		std::int64_t const filled = GetFilledFrames(inStartTime);
		mSequence->Preroll(MapRun(inReverse ? frame + filled : frame - filled, 0), isReverse);
		return;
	}
	if (!NeedsToSettle())
	{
		mSequence->Preroll(MapRun(frame, 0), isReverse);
		return;
	}
	// Forward, the sequence itself renders what its tracks are asked ahead, before it settles: in one run with
	// that, so that items which begin therein keep the head start of their effects.
	std::int64_t const count = mWindow.mSettlingFrames + (isReverse ? mWindow.mAheadFrames : 0);
	mSequence->Preroll(MapRun(inReverse ? frame + count : frame - count, 0), isReverse);
	Settle(frame, count, inReverse);
	mNextFrame = frame;
}

std::int64_t NestedContent::GetFilledFrames(SN::TickTime const& inStartTime)
{
	SN::TickTime const itemStart = inStartTime - mWindow.mPrerollLead;
	bool const hasBegunBefore =
		mNestingDepth != 0 && itemStart >= GetDelay() / mWindow.mSpeed + mWindow.mPrerollLead;
	return hasBegunBefore ? 0 : GetDelay().ToFrame64(mFrameRate);
}

bool NestedContent::NeedsToSettle() const
{
	return mDiscarded.GetNumChannels() != 0 && !mContext->IsDelayCompensationDisabled();
}

bool NestedContent::IsInTurn(std::int64_t inFrame, bool inReverse) const
{
	return mNextFrame ? *mNextFrame == inFrame : inReverse ? inFrame > mWindow.mFrames : inFrame < 0;
}

void NestedContent::Settle(std::int64_t inFrame, std::int64_t inCount, bool inReverse)
{
	for (std::int64_t remaining = inCount; remaining > 0;)
	{
		std::int64_t const count = std::min<std::int64_t>(remaining, mDiscarded.GetCapacity());
		std::int64_t const first = inReverse ? inFrame + remaining - count : inFrame - remaining;
		mDiscarded.SetUseSize(static_cast<unsigned>(count));
		mSequence->GetAudioData(MapRun(first, count), mDiscarded, MapDirection(inReverse));
		remaining -= count;
	}
}

void NestedContent::FillInitialDelay(
	SN::TickTime const& inStartTime, SN::TickTime const& inDelayTime, bool inReverse, bool inForceCompletion)
{
	SN::TickTime const start = MapRun(inStartTime.ToFrame64(mFrameRate), 0);
	if (inForceCompletion && mFilledFrom == start)
	{
		return;
	}
	mFilledFrom = inForceCompletion ? std::optional(start) : std::nullopt;
	mIsReset = false;
	mSequence->FillInitialDelay(start, inDelayTime, MapDirection(inReverse), inForceCompletion);
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
	std::int64_t const frame = inTime.ToFrame64(mFrameRate);
	std::int64_t const count = ioBuffer.GetUseSize();
	std::int64_t const begin = inReverse ? frame + count : frame;
	mIsReset = false;
	if (NeedsToSettle() && !IsInTurn(begin, inReverse))
	{
		Settle(begin, mWindow.mAheadFrames + mWindow.mSettlingFrames, inReverse);
	}
	mNextFrame = inReverse ? frame : frame + count;
	mSequence->GetAudioData(MapRun(frame, count), ioBuffer, MapDirection(inReverse));
}

void NestedContent::Reset()
{
	if (!mIsReset)
	{
		mIsReset = true;
		mSequence->Reset();
	}
}

void NestedContent::InitializeAudioFilters()
{
	if (!mAreFiltersRunning)
	{
		mAreFiltersRunning = true;
		mSequence->InitializeAudioFilters();
	}
}

void NestedContent::ShutdownAudioFilters()
{
	if (mAreFiltersRunning)
	{
		mAreFiltersRunning = false;
		mSequence->ShutdownAudioFilters();
	}
}

SN::TickTime NestedContent::MapRun(std::int64_t inFirstFrame, std::int64_t inCount) const
{
	std::int64_t const first = mWindow.mIsBackwards ? mWindow.mFirstFrame + 1 - inFirstFrame - inCount
													: mWindow.mFirstFrame + inFirstFrame;
	return {first, mFrameRate};
}

void* NestedContent::QueryMap(SN::Guid const& inIdentifier)
{
	void* const found = zorvcore::classref::QueryInterfaces<SN::IAudioGenerator,
		SN::IAudioRenderGraphNodeInfo, NestedContent>(this, inIdentifier);
	return found ? found : Unknown::QueryMap(inIdentifier);
}

} // namespace SonaroHost::Sequence
