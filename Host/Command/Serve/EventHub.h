#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>

namespace SonaroCommand::Serve
{

// What happens, for all clients that listen: server-sent events. Who reads too slowly misses the older ones.
// Threads: any.
class EventHub
{
public:
	// inData: one line.
	void Post(std::string const& inName, std::string const& inData);

	// The number of the next event.
	std::uint64_t GetNext();
	// The text of all events from ioNext on, which then is the one after them; empty when none came in time.
	std::string Wait(std::uint64_t& ioNext, std::chrono::milliseconds inTime);

	// False when there are too many listeners already.
	bool AddListener();
	void RemoveListener();

private:
	std::mutex mMutex;
	std::condition_variable mPosted;
	// The latest ones; mEnd is the number after the last.
	std::deque<std::string> mEvents;
	std::uint64_t mEnd = 0;
	int mListeners = 0;
};

} // namespace SonaroCommand::Serve
