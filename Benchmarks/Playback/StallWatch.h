#pragma once

#include <atomic>
#include <chrono>
#include <deque>
#include <thread>

namespace SonaroBenchmarks
{

// How late the machine itself is: a thread on each processor that runs before all that are measured sleeps for half a
// millisecond at a time. Where these wake late, whatever runs on the machine would have: other real-time threads, or the
// host of a virtual machine, held it up.
class StallWatch
{
public:
	StallWatch();
	~StallWatch();
	StallWatch(StallWatch const&) = delete;
	StallWatch& operator=(StallWatch const&) = delete;

	// Whether all of them got the priority that they need.
	bool IsFirst() const { return mIsFirst; }
	// The longest one on any processor since the last call, in milliseconds.
	double TakeLongest();

private:
	using Clock = std::chrono::steady_clock;

	struct Processor
	{
		std::atomic<Clock::rep> mLongest{0};
		std::thread mThread;
	};

	void Watch(unsigned inProcessor, std::atomic<Clock::rep>& ioLongest);

	std::atomic<bool> mIsEnding{false};
	std::atomic<bool> mIsFirst{true};
	std::deque<Processor> mProcessors;
};

} // namespace SonaroBenchmarks
