#pragma once

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

namespace SN::Testing
{

// Runs a function on so many threads at once, each given its number from 0 on, and waits for all of them.
inline void RunOnThreads(unsigned inCount, std::function<void(unsigned)> const& inRun)
{
	std::vector<std::thread> threads;
	for (unsigned i = 0; i < inCount; ++i)
	{
		threads.emplace_back(inRun, i);
	}
	for (std::thread& thread : threads)
	{
		thread.join();
	}
}

// Lets so many threads go on once all of them have come. The latch of libstdc++ may wait for ever on Windows.
class StartLine
{
public:
	explicit StartLine(unsigned inCount)
		: mMissing(inCount)
	{
	}
	void Wait()
	{
		--mMissing;
		while (mMissing.load() != 0)
		{
			std::this_thread::yield();
		}
	}

private:
	std::atomic<unsigned> mMissing;
};

} // namespace SN::Testing
