#pragma once

#include "SonaroHost/Playback/Playback.h"
#include "StallWatch.h"

#include <chrono>
#include <cstdint>

namespace SonaroBenchmarks
{

// Names misses as they come, and by how much the machine itself was late then: a device that asks for 128 samples every
// 2.7 ms, 5 ms ahead, misses some in any program where that is about as long.
class MissWatch
{
public:
	// inPlayback outlives it.
	explicit MissWatch(SonaroHost::Playback::Playback const& inPlayback)
		: mPlayback(inPlayback)
	{
	}

	// Waits, and prints a line for each miss.
	void Pause(double inSeconds);
	// Prints how late the machine was in all.
	void Report() const;

private:
	using Clock = std::chrono::steady_clock;

	SonaroHost::Playback::Playback const& mPlayback;
	Clock::time_point mStart = Clock::now();
	StallWatch mStalls;
	// In milliseconds: at the last look, and ever.
	double mLatest = 0.0;
	double mLongest = 0.0;
	unsigned mCount = 0;
	std::uint64_t mMissed = 0;
};

} // namespace SonaroBenchmarks
