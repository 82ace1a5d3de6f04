#include "Prefetch/RequestQueue.h"

namespace SN::AudioPrefetch
{

using zorvcore::threads::ScopedRecursiveLock;

bool RequestQueue::Append(std::list<QueueEntry>&& ioEntry, char const* inContext)
{
	ScopedRecursiveLock const lock(mMutex, inContext);
	if (!mIsClosed)
	{
		mEntries.splice(mEntries.end(), ioEntry);
	}
	return !mIsClosed;
}

void RequestQueue::Close(char const* inContext)
{
	ScopedRecursiveLock const lock(mMutex, inContext);
	mIsClosed = true;
}

std::list<QueueEntry> RequestQueue::TakeFront(char const* inContext)
{
	std::list<QueueEntry> entry;
	ScopedRecursiveLock const lock(mMutex, inContext);
	if (!mEntries.empty())
	{
		entry.splice(entry.end(), mEntries, mEntries.begin());
	}
	return entry;
}

} // namespace SN::AudioPrefetch
