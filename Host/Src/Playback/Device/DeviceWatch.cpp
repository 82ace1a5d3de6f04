#include "DeviceWatch.h"

#include <algorithm>
#include <ctime>

namespace SonaroHost::Playback
{

namespace
{

constexpr double kLongestPause = 2.0;
constexpr double kMostBlocks = 8.0;

} // namespace

double DeviceWatch::GetTime()
{
	constexpr double kNanosPerSecond = 1e9;
	std::timespec time{};
	clock_gettime(CLOCK_BOOTTIME, &time);
	return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / kNanosPerSecond;
}

void DeviceWatch::Start(double inTime, double inBlockSeconds)
{
	mLongest = std::max(kLongestPause, kMostBlocks * inBlockSeconds);
	mLast.store(inTime, std::memory_order_relaxed);
	mGap.store(0.0, std::memory_order_relaxed);
}

void DeviceWatch::Note(double inTime) noexcept
{
	double const gap = inTime - mLast.load(std::memory_order_relaxed);
	if (gap > mLongest && mGap.load(std::memory_order_relaxed) == 0.0)
	{
		mGap.store(gap, std::memory_order_relaxed);
	}
	mLast.store(inTime, std::memory_order_relaxed);
}

std::optional<double> DeviceWatch::FindGap(double inTime) const
{
	double const before = mGap.load(std::memory_order_relaxed);
	double const gap = before > 0.0 ? before : inTime - mLast.load(std::memory_order_relaxed);
	return gap > mLongest ? std::optional(gap) : std::nullopt;
}

} // namespace SonaroHost::Playback
