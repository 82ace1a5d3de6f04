#include "Prefetch/DiskLoad.h"

#include "zorvcore/utility/HighPrecisionTime.h"

#include <boost/rational.hpp>

#include <algorithm>
#include <limits>

namespace SN::AudioPrefetch
{

namespace
{

// Nanoseconds from inTimeStamp to now. A stamp that was never handed out may wrap, not overflow.
long long NanosecondsSince(unsigned long long inTimeStamp)
{
	namespace Clock = zorvcore::utility::HighPrecisionTime;
	auto const now = static_cast<unsigned long long>(Clock::ConvertToNanos(Clock::GetCurrentTimeStamp()));
	auto const then = static_cast<unsigned long long>(Clock::ConvertToNanos(inTimeStamp));
	return static_cast<long long>(now - then);
}

} // namespace

bool DiskLoad::IsOverloaded() const
{
	return mDiskLoadPercent.Get() > mOverloadThreshold.Get();
}

void DiskLoad::Measure(unsigned long long inTimeStamp)
{
	long long const stored = mPrefetchIntervalNanos.Get();
	long long const interval = stored != 0 ? stored : kDefaultIntervalNanos;
	long long const elapsed = NanosecondsSince(inTimeStamp);
	if (elapsed >= 2 * interval)
	{
		NoteBehind();
	}
	mDiskLoadPercent.Set(ToLoadPercent(elapsed, interval));
}

void DiskLoad::SetInterval(TickTime const& inInterval)
{
	mPrefetchIntervalNanos.Set(ToNanoseconds(inInterval));
}

void DiskLoad::Reset()
{
	mDiskLoadPercent.Set(0);
	mBehindCount.Set(0);
}

long long ToNanoseconds(TickTime const& inTime)
{
	auto const seconds = zorvmediatypes::TimeToRatioTime(inTime);
	// The fraction is in lowest terms.
	boost::rational<long long> const factor(1000000000, seconds.denominator());
	// Whole part and rest apart: the numerator of a long time leaves no room for the factor.
	long long const whole = seconds.numerator() / factor.denominator();
	long long const rest = seconds.numerator() % factor.denominator();
	return whole * factor.numerator() + rest * factor.numerator() / factor.denominator();
}

int ToLoadPercent(long long inElapsedNanos, long long inIntervalNanos)
{
	constexpr long long kLongest = std::numeric_limits<long long>::max() / 100;
	long long const elapsed = std::clamp(inElapsedNanos, -kLongest, kLongest);
	long long const percent = elapsed * 100 / inIntervalNanos;
	return static_cast<int>(
		std::clamp<long long>(percent, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

} // namespace SN::AudioPrefetch
