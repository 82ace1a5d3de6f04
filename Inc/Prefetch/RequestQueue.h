#pragma once

#include "Sonaro/IAudioPrefetchNotify.h"
#include "Sonaro/PrefetchRequest.h"
#include "zorvcore/threads/AtomicIntegral.h"
#include "zorvcore/threads/RecursiveMutex.h"

#include <list>
#include <vector>

namespace SN::AudioPrefetch
{

// What stands in a queue: a batch of requests, or the mark at which a cancel ends.
struct QueueEntry
{
	static constexpr int kBatch = 0;
	static constexpr int kCancelMarker = 1;

	int entryKind = kBatch;
	std::vector<PrefetchRequest> requests;
	// 0: the batch takes no part in the load measure.
	unsigned long long timeStamp = 0;
	InterfaceRef<IAudioPrefetchNotify> notify;
};

// The work of one priority. The lock is held only while the list is changed; the counts are read without
// it, so that a long batch notices a cancel.
//
// Threads  Append, Close: any. TakeFront: the prefetch thread.
class RequestQueue
{
public:
	// inName as RecursiveMutex wants it, inContext below too.
	explicit RequestQueue(char const* inName)
		: mMutex(inName)
	{
	}

	// Takes a list of one, so that nothing is allocated or copied under the lock. False, and nothing is
	// taken, once the queue is closed.
	bool Append(std::list<QueueEntry>&& ioEntry, char const* inContext);

	// Nothing is appended from now on; what was appended stays.
	void Close(char const* inContext);

	// The front entry as a list of one, empty when there is none.
	std::list<QueueEntry> TakeFront(char const* inContext);

	// The cancels asked for and not yet dequeued.
	zorvcore::threads::AtomicIntegral<int> mCancelCount;
	// Queued and not finished. Counted after the append, so that the prefetch thread may be first and
	// they dip below 0 for a moment.
	zorvcore::threads::AtomicIntegral<int> mPendingBatchCount;
	zorvcore::threads::AtomicIntegral<int> mPendingRequestCount;

private:
	zorvcore::threads::RecursiveMutex mMutex;
	std::list<QueueEntry> mEntries;
	bool mIsClosed = false;
};

} // namespace SN::AudioPrefetch
