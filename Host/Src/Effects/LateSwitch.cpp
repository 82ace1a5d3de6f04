#include "LateSwitch.h"

#include <algorithm>

namespace SonaroHost::Effects
{

LateSwitch::LateSwitch(unsigned inMostLatency, unsigned inMostFrames)
	: mMostLatency(inMostLatency),
	  mPositions(std::size_t{inMostLatency} + inMostFrames + 1),
	  mTime(inMostLatency)
{
}

void LateSwitch::Reset()
{
	mTime = mMostLatency;
	mHasBegun = false;
}

void LateSwitch::Mark(bool inIsOn, unsigned inCount)
{
	if (!mHasBegun)
	{
		std::ranges::fill(mPositions, inIsOn ? 1 : 0);
		mHasBegun = true;
		mLastChange = 0;
	}
	else if (inIsOn != mIsOn)
	{
		mLastChange = mTime;
	}
	mIsOn = inIsOn;
	for (std::uint64_t time = mTime; time < mTime + inCount; ++time)
	{
		mPositions[time % mPositions.size()] = inIsOn ? 1 : 0;
	}
}

std::uint64_t LateSwitch::FindTime(unsigned inLatency) const
{
	return mTime - std::min(inLatency, mMostLatency);
}

bool LateSwitch::IsOn(unsigned inOffset, unsigned inLatency) const
{
	return mPositions[(FindTime(inLatency) + inOffset) % mPositions.size()] != 0;
}

unsigned LateSwitch::CountSame(unsigned inLatency, unsigned inMost) const
{
	if (FindTime(inLatency) >= mLastChange)
	{
		return inMost;
	}
	bool const isOn = IsOn(0, inLatency);
	unsigned count = 1;
	while (count < inMost && IsOn(count, inLatency) == isOn)
	{
		++count;
	}
	return count;
}

} // namespace SonaroHost::Effects
