#include "zorvcore/utility/HighPrecisionTime.h"

#include <algorithm>
#include <chrono>

namespace zorvcore::utility::HighPrecisionTime
{

using Clock = std::chrono::steady_clock;

unsigned long long GetCurrentTimeStamp() noexcept
{
	return static_cast<unsigned long long>(std::max<Clock::rep>(Clock::now().time_since_epoch().count(), 1));
}

long long ConvertToNanos(unsigned long long inStamp) noexcept
{
	Clock::duration const span(static_cast<Clock::rep>(inStamp));
	return std::chrono::duration_cast<std::chrono::nanoseconds>(span).count();
}

} // namespace zorvcore::utility::HighPrecisionTime
