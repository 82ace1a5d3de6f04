#pragma once

#include "Prefetch/DiskLoad.h"
#include "Prefetch/RequestQueue.h"
#include "Sonaro/AudioPrefetch.h"
#include "zorvcore/debug/DebugMonitor.h"
#include "zorvcore/threads/AsyncThreadedExecutor.h"
#include "zorvcore/threads/QueueOnlyOnce.h"

#include <exception>
#include <memory>
#include <vector>

namespace SN::AudioPrefetch
{

// The two queues of prefetch work and the one thread that works through them.
//
// Batches  Playback first, looked at again after each waveform batch. Every batch that was taken calls
//          its notify once, read or not. A source that throws abandons the rest of its batch; the other
//          batches are served, and then the first exception goes on to the executor, which reports it.
// Cancel   Counts at once and stands in the queue as a marker: what is ahead of the marker is dequeued
//          without being read, and the marker ends the cancel.
// Load     Each batch with a time stamp measures the load at its end, a batch that was given up too, so
//          that its stamp decides whether the next one is read.
//
// Q1 to Q3  A batch is appended, under its queue's lock; it is counted; the service is triggered.
// K1 to K3  A cancel is counted; its marker is appended, under the lock; the service is triggered.
// S1 to S3  A run: the trigger's mark goes; the front of playback is taken, again and again; where there is
//           none, that of waveforms.
// B1 to B4  Each request sees whether the batch is given up; if not, it is read; the batch is counted as
//           done; its notify is called.
// E1 to E5  The end: both priorities are cancelled; both queues are closed; the service is triggered once
//           more, for who is between Q1 and Q3; the executor runs dry and ends; the process forgets the queue.
//
// Threads  Any. Sources and notifies are called on the executor's thread alone.
class AudioPrefetchQueue : public std::enable_shared_from_this<AudioPrefetchQueue>
{
public:
	static std::shared_ptr<zorvcore::threads::AsyncThreadedExecutor> CreateExecutor();

	// Throws AudioPrefetchQueueFailure without an executor, which is to have one thread.
	static std::shared_ptr<AudioPrefetchQueue> Create(
		std::shared_ptr<zorvcore::threads::AsyncThreadedExecutor> inExecutor = CreateExecutor());

	AudioPrefetchQueue(AudioPrefetchQueue const&) = delete;
	AudioPrefetchQueue& operator=(AudioPrefetchQueue const&) = delete;

	// Cancels both priorities, refuses what comes later, and waits until the thread has emptied the queues
	// and ended.
	void Shutdown();

	// False, and nothing is queued, from the shutdown on.
	bool QueuePrefetchRequests(PrefetchPriority inPriority, std::vector<PrefetchRequest> const& inRequests,
		unsigned long long inTimeStamp, InterfaceRef<IAudioPrefetchNotify> inNotify);
	bool CancelAllPendingPrefetchRequests(PrefetchPriority inPriority);

	// See the functions of the same names in Sonaro/AudioPrefetch.h.
	void NotifyPrefetchIntervalChanged(TickTime const& inInterval) { mLoad.SetInterval(inInterval); }
	void Reset();
	bool WasPrefetchBehind() { return mLoad.TakeBehind(); }

	// Works on the executor's thread until both queues are empty. Throws what a source or a notify threw first.
	void ServiceQueueOnce();

private:
	explicit AudioPrefetchQueue(std::shared_ptr<zorvcore::threads::AsyncThreadedExecutor> inExecutor);

	void CreateServiceTrigger();
	RequestQueue& GetQueue(PrefetchPriority inPriority);

	// False when the queue was empty.
	bool RunNextEntry(RequestQueue& ioQueue);
	void RunBatch(QueueEntry const& inBatch, RequestQueue& ioQueue);
	// Whether the batch was abandoned at any point.
	bool RunRequests(QueueEntry const& inBatch, RequestQueue& ioQueue);
	void RunRequest(PrefetchRequest const& inRequest, unsigned long long inTimeStamp) const;
	// Runs code of the host's. False when it threw.
	template <class Function>
	bool RunGuarded(Function const& inFunction);

	void WriteDebugMonitor(zorvcore::debug::DebugMonitorStream& ioStream) const;

	std::shared_ptr<zorvcore::threads::AsyncThreadedExecutor> mExecutor;
	std::shared_ptr<zorvcore::threads::QueueOnlyOnce> mServiceTrigger;
	RequestQueue mPlaybackQueue{"SN::AudioPrefetch playback"};
	RequestQueue mWaveformQueue{"SN::AudioPrefetch waveform"};
	DiskLoad mLoad;
	// The first exception that the executor does not know of yet. Used on the executor's thread only.
	std::exception_ptr mFailure;
	// A wait before each request, in milliseconds.
	zorvcore::debug::CachedDebugInteger const mRequestProcessingDelay{
		"Sonaro.Prefetch.RequestProcessingDelay", 0};
	// Last, so that it ends before what it shows.
	zorvcore::debug::DebugMonitorRegistration mMonitor;
};

} // namespace SN::AudioPrefetch
