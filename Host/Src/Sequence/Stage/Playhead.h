#pragma once

#include "Sonaro/Types.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

namespace SonaroHost::Sequence
{

// Neighbouring frames of a sound in the order in which they are played.
struct FrameRun
{
	std::int64_t GetFrame(std::int64_t inIndex) const { return mFirst + mStep * inIndex; }
	std::int64_t GetLowest() const { return std::min(mFirst, GetFrame(mCount - 1)); }
	std::int64_t GetHighest() const { return std::max(mFirst, GetFrame(mCount - 1)); }

	std::int64_t mFirst = 0;
	// 1 or, in reverse, -1.
	std::int64_t mStep = 1;
	std::int64_t mCount = 0;
};

// A range that a playback goes round in, in frames.
struct LoopRange
{
	bool IsEmpty() const { return mFirst >= mEnd; }
	std::int64_t GetLength() const { return mEnd - mFirst; }
	// Where a frame that runs ahead of the sound that is heard lies: what goes beyond the loop's end, or in reverse
	// beyond its start, comes from its other side, as often as it takes. The loop may have any length.
	std::int64_t Wrap(std::int64_t inFrame, bool inIsReverse) const;
	// How many frames from one on, which is wrapped, follow each other without a jump.
	std::int64_t GetRunLength(std::int64_t inFrame, std::int64_t inCount, bool inIsReverse) const;

	std::int64_t mFirst = 0;
	std::int64_t mEnd = 0;
};

// What the stages of one sequence, or of one item, are asked for at present. Who runs them writes it before each
// request; they work out from it which frames of sound they hear. The times that the engine hands to processors do
// not show it: they count from the start of control blocks and rise in submixes that play in reverse.
struct Playhead
{
	// Called before the pulls of a request. inFirst: its lowest frame.
	void Begin(std::int64_t inFirst, std::int64_t inCount, bool inIsReverse)
	{
		mFirst = inFirst;
		mCount = inCount;
		mIsReverse = inIsReverse;
		++mRequest;
	}

	std::int64_t mFirst = 0;
	std::int64_t mCount = 0;
	bool mIsReverse = false;
	// What is rendered now only fills histories; the output is discarded.
	bool mIsSettling = false;
	// The request does not follow the last one, so that what is heard begins anew.
	bool mIsFresh = false;
	// A level of nesting around this one discards what it gets.
	bool mIsUnheard = false;
	std::uint64_t mRequest = 0;
	LoopRange mLoop;
	// The direction in which it is read ahead. Only for whoever reads ahead, perhaps on another thread.
	bool mIsPrefetchedInReverse = false;
	// The clone's playhead, while what reads this one is cloned.
	std::shared_ptr<Playhead> mClone;
};

// How the frames that a chain works on are counted.
struct ChainTime
{
	std::shared_ptr<Playhead> mPlayhead;
	// How far ahead of the playhead the chain is asked, in frames. It is worked out once the chain is built.
	std::shared_ptr<std::int64_t const> mAhead;
	SN::FrameRate mFrameRate;
	// The frame at which the time of the chain's curves begins, and how much of this passes in a frame.
	std::int64_t mOrigin = 0;
	double mCurveScale = 1.0;
};

// Shows a stage which frames of sound it hears: a function of the playhead alone, whatever the cut, the direction or
// the jumps.
class StageClock
{
public:
	// inLatency: the latency of the effects before the stage, in frames.
	StageClock(ChainTime const& inTime, std::int64_t inLatency)
		: mTime(inTime),
		  mLatency(inLatency)
	{
	}

	// The clock for the clone of the stage.
	StageClock Clone() const;

	// The next frames of the request, as runs without a jump: inUse(FrameRun, index of its first frame).
	template <class Use>
	void Take(std::int64_t inCount, Use const& inUse)
	{
		for (std::int64_t done = 0; done < inCount;)
		{
			FrameRun const run = Next(inCount - done);
			inUse(run, static_cast<unsigned>(done));
			done += run.mCount;
		}
	}

	// The time of the chain's curves at a frame.
	SN::TickTime ToCurveTime(std::int64_t inFrame) const;
	// The first frames that are not before these times of the curves, each once and in their order.
	std::vector<std::int64_t> FindFrames(std::vector<SN::TickTime> const& inTimes) const;
	// Whether what is rendered now does not follow what was heard before.
	bool IsJumping() const { return mTime.mPlayhead->mIsSettling || mTime.mPlayhead->mIsFresh; }
	std::uint64_t GetRequest() const { return mTime.mPlayhead->mRequest; }
	// Whether nobody hears what is rendered now.
	bool IsSettling() const { return mTime.mPlayhead->mIsSettling || mTime.mPlayhead->mIsUnheard; }
	SN::FrameRate const& GetFrameRate() const { return mTime.mFrameRate; }

private:
	FrameRun Next(std::int64_t inCount);

	ChainTime mTime;
	std::int64_t mLatency;
	// The playhead's request that was seen last, and the frames of it that are done.
	std::uint64_t mRequest = 0;
	std::int64_t mDone = 0;
};

} // namespace SonaroHost::Sequence
