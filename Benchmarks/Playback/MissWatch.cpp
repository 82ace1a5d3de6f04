#include "MissWatch.h"

#include <algorithm>
#include <cstdio>
#include <thread>
#include <utility>

namespace SonaroBenchmarks
{

namespace
{

// In milliseconds.
constexpr double kLate = 2.0;

using Seconds = std::chrono::duration<double>;

} // namespace

void MissWatch::Pause(double inSeconds)
{
	Clock::time_point const start = Clock::now();
	while (Seconds(Clock::now() - start).count() < inSeconds)
	{
		std::this_thread::sleep_for(Seconds(0.01));
		double const latest = mStalls.TakeLongest();
		mLongest = std::max(mLongest, latest);
		mCount += latest > kLate ? 1 : 0;
		// A device asks in vain after what held the renderer up.
		double const stall = std::max(std::exchange(mLatest, latest), latest);
		std::uint64_t const missed = mPlayback.GetState().mMissedFrames;
		if (missed == std::exchange(mMissed, missed))
		{
			continue;
		}
		std::printf(
			"after %.2f s, %.2f s from a seek: missed frames are %llu by now; the machine was %.1f ms late\n",
			Seconds(Clock::now() - mStart).count(), Seconds(Clock::now() - start).count(),
			static_cast<unsigned long long>(missed), stall);
		std::fflush(stdout);
	}
}

void MissWatch::Report() const
{
	std::printf("the machine itself was late by more than %.0f ms %u times, at most %.1f ms%s\n", kLate,
		mCount, mLongest, mStalls.IsFirst() ? "" : " (without real-time scheduling, which is not permitted)");
}

} // namespace SonaroBenchmarks
