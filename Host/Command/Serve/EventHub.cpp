#include "EventHub.h"

#include <algorithm>

namespace SonaroCommand::Serve
{

namespace
{

constexpr std::size_t kMostEvents = 64;
// Each of them keeps a thread.
constexpr int kMostListeners = 24;

} // namespace

void EventHub::Post(std::string const& inName, std::string const& inData)
{
	std::lock_guard const lock(mMutex);
	mEvents.push_back("event: " + inName + "\ndata: " + inData + "\n\n");
	++mEnd;
	if (mEvents.size() > kMostEvents)
	{
		mEvents.pop_front();
	}
	mPosted.notify_all();
}

std::uint64_t EventHub::GetNext()
{
	std::lock_guard const lock(mMutex);
	return mEnd;
}

std::string EventHub::Wait(std::uint64_t& ioNext, std::chrono::milliseconds inTime)
{
	std::unique_lock lock(mMutex);
	mPosted.wait_for(lock, inTime, [&] { return mEnd > ioNext; });
	std::string text;
	std::uint64_t const first = mEnd - mEvents.size();
	for (std::uint64_t event = std::max(ioNext, first); event < mEnd; ++event)
	{
		text += mEvents[event - first];
	}
	ioNext = mEnd;
	return text;
}

bool EventHub::AddListener()
{
	std::lock_guard const lock(mMutex);
	bool const hasRoom = mListeners < kMostListeners;
	mListeners += hasRoom ? 1 : 0;
	return hasRoom;
}

void EventHub::RemoveListener()
{
	std::lock_guard const lock(mMutex);
	--mListeners;
}

} // namespace SonaroCommand::Serve
