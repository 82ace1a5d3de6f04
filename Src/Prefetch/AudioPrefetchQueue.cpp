#include "Prefetch/AudioPrefetchQueue.h"

#include "Prefetch/AudioPrefetchQueueFailure.h"
#include "zorvcore/threads/ThreadPriority.h"

#include <chrono>
#include <list>
#include <string_view>
#include <thread>
#include <utility>

namespace SN::AudioPrefetch
{

using zorvcore::threads::AsyncThreadedExecutor;
using zorvcore::threads::QueueOnlyOnce;

namespace
{

constexpr char const* kMonitorName = "SN.AudioPrefetch.AudioPrefetchQueue";

constexpr std::u16string_view kRequestsLabel = u"\tRequests:\t\t\t";
constexpr std::u16string_view kCancelCountLabel = u"\tCancel Count:\t\t";
constexpr std::u16string_view kDiskLoadLabel = u"\tDisk Load (%):\t\t";
// Nothing is dropped any more, and so it has no line.
[[maybe_unused]] constexpr std::u16string_view kDroppedPrefetchesLabel = u"Dropped Prefetches:\t\t";

void WriteCounts(RequestQueue const& inQueue, zorvcore::debug::DebugMonitorStream& ioStream)
{
	ioStream << kRequestsLabel << inQueue.mPendingBatchCount.Get() << u" / "
			 << inQueue.mPendingRequestCount.Get() << u"\n";
	ioStream << kCancelCountLabel << inQueue.mCancelCount.Get() << u"\n";
}

} // namespace

std::shared_ptr<AsyncThreadedExecutor> AudioPrefetchQueue::CreateExecutor()
{
	return zorvcore::threads::CreateAsyncThreadedExecutor(
		"SN::AudioPrefetch", 1, zorvcore::threads::ThreadPriority::kAboveNormal);
}

std::shared_ptr<AudioPrefetchQueue> AudioPrefetchQueue::Create(
	std::shared_ptr<AsyncThreadedExecutor> inExecutor)
{
	std::shared_ptr<AudioPrefetchQueue> queue(new AudioPrefetchQueue(std::move(inExecutor)));
	queue->CreateServiceTrigger();
	queue->mMonitor = zorvcore::debug::RegisterDebugMonitorCallback(
		kMonitorName, [self = queue.get()](auto& ioStream) { self->WriteDebugMonitor(ioStream); }, true);
	return queue;
}

AudioPrefetchQueue::AudioPrefetchQueue(std::shared_ptr<AsyncThreadedExecutor> inExecutor)
	: mExecutor(std::move(inExecutor))
{
}

void AudioPrefetchQueue::CreateServiceTrigger()
{
	if (!mExecutor)
	{
		throw AudioPrefetchQueueFailure(__FILE__, __LINE__);
	}
	// The function holds the queue only while it runs, so that a late trigger neither keeps it nor needs it.
	auto const service = [weakSelf = weak_from_this()]
	{
		if (auto const self = weakSelf.lock())
		{
			self->ServiceQueueOnce();
		}
	};
	mServiceTrigger = QueueOnlyOnce::Create(service, mExecutor);
}

void AudioPrefetchQueue::Shutdown()
{
	CancelAllPendingPrefetchRequests(PlaybackPriority);
	CancelAllPendingPrefetchRequests(WaveformPriority);
	// A notify that asks for more in turn is refused from here on, and the queues run empty.
	mPlaybackQueue.Close("SN::AudioPrefetch::AudioPrefetchQueue::Shutdown");
	mWaveformQueue.Close("SN::AudioPrefetch::AudioPrefetchQueue::Shutdown");
	// A caller may have appended a batch and not have come to its trigger yet.
	mServiceTrigger->Queue();
	try
	{
		if (auto const executor = std::exchange(mExecutor, nullptr))
		{
			executor->Stop();
			executor->Dispose();
		}
	}
	catch (std::exception const&)
	{
		// The queue is given up either way.
	}
}

RequestQueue& AudioPrefetchQueue::GetQueue(PrefetchPriority inPriority)
{
	return inPriority == PlaybackPriority ? mPlaybackQueue : mWaveformQueue;
}

bool AudioPrefetchQueue::QueuePrefetchRequests(PrefetchPriority inPriority,
	std::vector<PrefetchRequest> const& inRequests, unsigned long long inTimeStamp,
	InterfaceRef<IAudioPrefetchNotify> inNotify)
{
	RequestQueue& queue = GetQueue(inPriority);
	std::list<QueueEntry> entry;
	entry.push_back({QueueEntry::kBatch, inRequests, inTimeStamp, std::move(inNotify)});
	if (!queue.Append(std::move(entry), "SN::AudioPrefetch::AudioPrefetchQueue::QueuePrefetchRequests"))
	{
		return false;
	}
	queue.mPendingBatchCount.Add(1);
	queue.mPendingRequestCount.Add(static_cast<int>(inRequests.size()));
	mServiceTrigger->Queue();
	return true;
}

bool AudioPrefetchQueue::CancelAllPendingPrefetchRequests(PrefetchPriority inPriority)
{
	RequestQueue& queue = GetQueue(inPriority);
	// Made before the count, which must never stand without its marker.
	std::list<QueueEntry> marker;
	marker.push_back({QueueEntry::kCancelMarker, {}, 0, {}});
	queue.mCancelCount.Add(1);
	if (!queue.Append(
			std::move(marker), "SN::AudioPrefetch::AudioPrefetchQueue::CancelAllPendingPrefetchRequests"))
	{
		queue.mCancelCount.Add(-1);
		return false;
	}
	mServiceTrigger->Queue();
	return true;
}

void AudioPrefetchQueue::Reset()
{
	if (mPlaybackQueue.mCancelCount.Get() == 0 && mWaveformQueue.mCancelCount.Get() == 0)
	{
		mLoad.Reset();
	}
}

void AudioPrefetchQueue::ServiceQueueOnce()
{
	while (RunNextEntry(mPlaybackQueue) || RunNextEntry(mWaveformQueue))
	{
	}
	if (auto const failure = std::exchange(mFailure, nullptr))
	{
		std::rethrow_exception(failure);
	}
}

template <class Function>
bool AudioPrefetchQueue::RunGuarded(Function const& inFunction)
{
	try
	{
		inFunction();
		return true;
	}
	catch (...)
	{
		mFailure = mFailure ? mFailure : std::current_exception();
		return false;
	}
}

bool AudioPrefetchQueue::RunNextEntry(RequestQueue& ioQueue)
{
	std::list<QueueEntry> const taken =
		ioQueue.TakeFront("SN::AudioPrefetch::AudioPrefetchQueue::ServiceQueueOnce");
	if (taken.empty())
	{
		return false;
	}
	QueueEntry const& entry = taken.front();
	if (entry.entryKind == QueueEntry::kCancelMarker)
	{
		ioQueue.mCancelCount.Add(-1);
		mLoad.ClearPercent();
	}
	else
	{
		RunBatch(entry, ioQueue);
	}
	return true;
}

void AudioPrefetchQueue::RunBatch(QueueEntry const& inBatch, RequestQueue& ioQueue)
{
	bool const abandoned = RunRequests(inBatch, ioQueue);
	ioQueue.mPendingBatchCount.Add(-1);
	if (inBatch.notify)
	{
		RunGuarded([&] { inBatch.notify->Complete(abandoned ? zorvcore::eWaitFailed : zorvcore::kSuccess); });
	}
	if (inBatch.timeStamp != 0)
	{
		mLoad.Measure(inBatch.timeStamp);
	}
}

bool AudioPrefetchQueue::RunRequests(QueueEntry const& inBatch, RequestQueue& ioQueue)
{
	bool abandoned = mLoad.IsOverloaded();
	if (abandoned)
	{
		mLoad.NoteBehind();
	}
	else
	{
		abandoned = ioQueue.mCancelCount.Get() > 0;
	}
	for (PrefetchRequest const& request : inBatch.requests)
	{
		abandoned = abandoned || ioQueue.mCancelCount.Get() > 0 ||
					!RunGuarded([&] { RunRequest(request, inBatch.timeStamp); });
		ioQueue.mPendingRequestCount.Add(-1);
	}
	return abandoned;
}

void AudioPrefetchQueue::RunRequest(PrefetchRequest const& inRequest, unsigned long long inTimeStamp) const
{
	bool const reads = inRequest.kind == PrefetchRequest::kKindRead;
	if (!inRequest.source || (!reads && inRequest.kind != PrefetchRequest::kKindPrepare))
	{
		return;
	}
	if (int const delay = mRequestProcessingDelay.Get(); delay > 0)
	{
		std::this_thread::sleep_for(std::chrono::milliseconds(delay));
	}
	if (reads)
	{
		inRequest.source->PrefetchAudioData(inTimeStamp, inRequest.time, inRequest.numSamples);
	}
	else if (InterfaceRef<IPreparableAudioSource> const preparable = inRequest.source)
	{
		preparable->PrepareForPrefetch(inRequest.time, inRequest.numSamples);
	}
}

void AudioPrefetchQueue::WriteDebugMonitor(zorvcore::debug::DebugMonitorStream& ioStream) const
{
	ioStream << u"Playback:\n";
	WriteCounts(mPlaybackQueue, ioStream);
	ioStream << kDiskLoadLabel << mLoad.GetPercent() << u"\n";
	ioStream << u"Waveform:\n";
	WriteCounts(mWaveformQueue, ioStream);
}

} // namespace SN::AudioPrefetch
