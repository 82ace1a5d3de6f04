#pragma once

#include "Sonaro/Types.h"
#include "zorvcore/debug/DebugDatabase.h"
#include "zorvcore/threads/AtomicIntegral.h"

namespace SN::AudioPrefetch
{

// How late the prefetch is: the age of the last measured batch at its end, in percent of the interval in
// which the host asks for audio.
//
// Threads  Measure, NoteBehind and Clear...: prefetch thread. The rest: any.
class DiskLoad
{
public:
	static constexpr long long kDefaultIntervalNanos = 2000000000;

	// Whether the load is above the threshold of the debug database.
	bool IsOverloaded() const;
	void NoteBehind() { mBehindCount.Add(1); }

	// Ends a batch that was wanted at inTimeStamp. One that is two intervals late is noted for TakeBehind.
	void Measure(unsigned long long inTimeStamp);
	void ClearPercent() { mDiskLoadPercent.Set(0); }

	// 0 stands for kDefaultIntervalNanos.
	void SetInterval(TickTime const& inInterval);
	void Reset();

	// Whether anything was late since the last call.
	bool TakeBehind() { return mBehindCount.Exchange(0) >= 1; }

	int GetPercent() const { return mDiskLoadPercent.Get(); }

private:
	zorvcore::debug::CachedDebugInteger const mOverloadThreshold{
		"Sonaro.Prefetch.DiskOverloadThreshold", 110};
	zorvcore::threads::AtomicIntegral<long long, kDefaultIntervalNanos> mPrefetchIntervalNanos;
	zorvcore::threads::AtomicIntegral<int> mDiskLoadPercent;
	zorvcore::threads::AtomicIntegral<int> mBehindCount;
};

// inTime in whole nanoseconds, rounded towards 0. No time overflows.
long long ToNanoseconds(TickTime const& inTime);

// inElapsedNanos in percent of inIntervalNanos, which is not 0, rounded towards 0 and clamped to 32 bits.
int ToLoadPercent(long long inElapsedNanos, long long inIntervalNanos);

} // namespace SN::AudioPrefetch
