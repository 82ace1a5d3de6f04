#include "Sonaro/AudioPrefetch.h"

#include "AudioRender/Core/Module.h"
#include "Prefetch/AudioPrefetchModule.h"
#include "Prefetch/AudioPrefetchQueue.h"
#include "zorvcore/config/Exceptions.h"
#include "zorvcore/debug/TypeName.h"

#include <memory>
#include <mutex>
#include <typeinfo>
#include <utility>

namespace SN::AudioPrefetch
{

namespace
{

// The one instance of the process. Never destroyed: the module may stop later than this file's statics.
struct InstanceSlot
{
	static InstanceSlot& Instance()
	{
		static auto& slot = *new InstanceSlot;
		return slot;
	}

	std::shared_ptr<AudioPrefetchQueue> Get()
	{
		std::lock_guard const lock(mMutex);
		return mQueue;
	}

	void Set(std::shared_ptr<AudioPrefetchQueue> inQueue)
	{
		// The former one goes outside the lock.
		std::lock_guard const lock(mMutex);
		mQueue.swap(inQueue);
	}

private:
	std::mutex mMutex;
	std::shared_ptr<AudioPrefetchQueue> mQueue;
};

std::shared_ptr<AudioPrefetchQueue> GetQueue()
{
	EnsureModule();
	return InstanceSlot::Instance().Get();
}

// Refuses a caller where there is no instance, and from its shutdown on.
void CheckTaken(bool inIsTaken)
{
	if (!inIsTaken)
	{
		zorvcore::config::DoThrowNullPtrException(zorvcore::debug::GetTypeName(typeid(AudioPrefetchQueue)));
	}
}

} // namespace

void Startup()
{
	if (!InstanceSlot::Instance().Get())
	{
		InstanceSlot::Instance().Set(AudioPrefetchQueue::Create());
	}
}

void Shutdown()
{
	if (auto const queue = InstanceSlot::Instance().Get())
	{
		queue->Shutdown();
		InstanceSlot::Instance().Set(nullptr);
	}
}

void PrefetchAudio(PrefetchPriority inPriority, std::vector<PrefetchRequest> const& inRequests,
	unsigned long long const& inTimeStamp, InterfaceRef<IAudioPrefetchNotify> inNotify)
{
	auto const queue = GetQueue();
	CheckTaken(
		queue && queue->QueuePrefetchRequests(inPriority, inRequests, inTimeStamp, std::move(inNotify)));
}

void CancelAllPendingPrefetchRequests(PrefetchPriority inPriority)
{
	auto const queue = GetQueue();
	CheckTaken(queue && queue->CancelAllPendingPrefetchRequests(inPriority));
}

void NotifyPrefetchIntervalChanged(TickTime const& inInterval)
{
	if (auto const queue = GetQueue())
	{
		queue->NotifyPrefetchIntervalChanged(inInterval);
	}
}

void Reset()
{
	if (auto const queue = GetQueue())
	{
		queue->Reset();
	}
}

bool WasPrefetchBehind()
{
	auto const queue = GetQueue();
	return queue && queue->WasPrefetchBehind();
}

} // namespace SN::AudioPrefetch
