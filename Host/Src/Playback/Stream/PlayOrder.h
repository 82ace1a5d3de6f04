#pragma once

#include <algorithm>
#include <cstdint>

namespace SonaroHost::Playback
{

// In which order the frames of a programme are played. A place lies between two frames: forward, the frame after it is
// played next, in reverse the one before it. Beyond its ends a programme is silent, for ever.
struct PlayOrder
{
	// inPlace: where playing begins. A loop that lies before it, in the direction of playing, is not gone round in.
	static PlayOrder Make(
		bool inIsReverse, std::int64_t inLoopFirst, std::int64_t inLoopEnd, std::int64_t inPlace)
	{
		bool const isAhead = inIsReverse ? inPlace > inLoopFirst : inPlace < inLoopEnd;
		return isAhead && inLoopFirst < inLoopEnd ? PlayOrder{inIsReverse, inLoopFirst, inLoopEnd}
												  : PlayOrder{inIsReverse, 0, 0};
	}

	bool IsLoop() const { return mLoopFirst < mLoopEnd; }
	std::int64_t GetLoopLength() const { return mLoopEnd - mLoopFirst; }

	// A place so many frames off in the direction of playing, as if there was no loop.
	std::int64_t MoveStraight(std::int64_t inPlace, std::int64_t inFrames) const
	{
		return mIsReverse ? inPlace - inFrames : inPlace + inFrames;
	}
	// How many frames from a place on are played before it jumps, at most inFrames.
	std::int64_t CountRun(std::int64_t inPlace, std::int64_t inFrames) const
	{
		std::int64_t const left = mIsReverse ? inPlace - mLoopFirst : mLoopEnd - inPlace;
		return IsLoop() ? std::min(left, inFrames) : inFrames;
	}
	// The place after so many frames. At the end of a loop's round it is at the beginning of the next one.
	std::int64_t Move(std::int64_t inPlace, std::int64_t inFrames) const
	{
		std::int64_t const place = MoveStraight(inPlace, inFrames);
		if (!IsLoop() || (mIsReverse ? place > mLoopFirst : place < mLoopEnd))
		{
			return place;
		}
		return mIsReverse ? mLoopEnd - (mLoopFirst - place) % GetLoopLength()
						  : mLoopFirst + (place - mLoopEnd) % GetLoopLength();
	}

	bool mIsReverse = false;
	std::int64_t mLoopFirst = 0;
	std::int64_t mLoopEnd = 0;
};

} // namespace SonaroHost::Playback
