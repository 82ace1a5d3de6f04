#pragma once

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

} // namespace SN::Testing
