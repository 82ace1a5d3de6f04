#pragma once

#include "Sonaro/Types.h"

namespace SN
{

// A stretch of time that will soon be read. Both ends belong to it; scaling is about time zero.
struct SONARO_API PrefetchRange
{
	// Both ends kTime_Invalid.
	PrefetchRange() = default;
	PrefetchRange(TickTime const& inStart, TickTime const& inEnd)
		: mStart(inStart),
		  mEnd(inEnd)
	{
	}

	friend bool operator==(PrefetchRange const&, PrefetchRange const&) = default;

	PrefetchRange operator+(TickTime const& inOffset) const { return {mStart + inOffset, mEnd + inOffset}; }
	PrefetchRange operator-(TickTime const& inOffset) const { return *this + -inOffset; }
	PrefetchRange operator*(double inFactor) const { return {mStart * inFactor, mEnd * inFactor}; }
	PrefetchRange operator/(double inDivisor) const { return {mStart / inDivisor, mEnd / inDivisor}; }
	PrefetchRange& operator+=(TickTime const& inOffset) { return *this = *this + inOffset; }
	PrefetchRange& operator-=(TickTime const& inOffset) { return *this = *this - inOffset; }
	PrefetchRange& operator*=(double inFactor) { return *this = *this * inFactor; }
	PrefetchRange& operator/=(double inDivisor) { return *this = *this / inDivisor; }

	bool Contains(TickTime const& inTime) const { return mStart <= inTime && inTime <= mEnd; }
	// No length, or an end before the start.
	bool IsEmpty() const { return mStart >= mEnd; }
	bool IsValid() const { return mStart < mEnd; }

	TickTime mStart = kTime_Invalid;
	TickTime mEnd = kTime_Invalid;
};

} // namespace SN
