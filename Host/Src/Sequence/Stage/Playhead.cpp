#include "Playhead.h"

namespace SonaroHost::Sequence
{

std::int64_t LoopRange::Wrap(std::int64_t inFrame, bool inIsReverse) const
{
	if (IsEmpty())
	{
		return inFrame;
	}
	if (inIsReverse)
	{
		return inFrame < mFirst ? mEnd - 1 - (mFirst - 1 - inFrame) % GetLength() : inFrame;
	}
	return inFrame < mEnd ? inFrame : mFirst + (inFrame - mFirst) % GetLength();
}

std::int64_t LoopRange::GetRunLength(std::int64_t inFrame, std::int64_t inCount, bool inIsReverse) const
{
	if (IsEmpty())
	{
		return inCount;
	}
	std::int64_t const left = inIsReverse ? inFrame - mFirst + 1 : mEnd - inFrame;
	return std::min(inCount, left);
}

StageClock StageClock::Clone() const
{
	StageClock clone(mTime, mLatency);
	if (mTime.mPlayhead->mClone)
	{
		clone.mTime.mPlayhead = mTime.mPlayhead->mClone;
	}
	return clone;
}

FrameRun StageClock::Next(std::int64_t inCount)
{
	Playhead const& head = *mTime.mPlayhead;
	if (mRequest != head.mRequest)
	{
		mRequest = head.mRequest;
		mDone = 0;
	}
	std::int64_t const ahead = *mTime.mAhead - mLatency + mDone;
	std::int64_t const frame = head.mIsReverse ? head.mFirst + head.mCount - 1 - ahead : head.mFirst + ahead;
	std::int64_t const wrapped = head.mLoop.Wrap(frame, head.mIsReverse);
	FrameRun const run{
		wrapped, head.mIsReverse ? -1 : 1, head.mLoop.GetRunLength(wrapped, inCount, head.mIsReverse)};
	mDone += run.mCount;
	return run;
}

SN::TickTime StageClock::ToCurveTime(std::int64_t inFrame) const
{
	SN::TickTime const time(inFrame - mTime.mOrigin, mTime.mFrameRate);
	return mTime.mCurveScale == 1.0 ? time : time * mTime.mCurveScale;
}

std::vector<std::int64_t> StageClock::FindFrames(std::vector<SN::TickTime> const& inTimes) const
{
	std::vector<std::int64_t> frames;
	for (SN::TickTime const& time : inTimes)
	{
		SN::TickTime const unscaled = mTime.mCurveScale == 1.0 ? time : time / mTime.mCurveScale;
		// Roundings may bring it to a neighbour.
		std::int64_t frame = mTime.mOrigin + unscaled.ToFrame64(mTime.mFrameRate) - 1;
		for (int step = 0; step < 3 && ToCurveTime(frame) < time; ++step)
		{
			++frame;
		}
		frames.push_back(frame);
	}
	std::ranges::sort(frames);
	frames.erase(std::unique(frames.begin(), frames.end()), frames.end());
	return frames;
}

} // namespace SonaroHost::Sequence
