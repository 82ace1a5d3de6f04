#include "Sonaro/AudioWaveformQueue.h"

#include "AudioRender/Core/Module.h"
#include "Waveform/AudioWaveformBuffer.h"
#include "zorvcore/threads/AsyncThreadedExecutor.h"
#include "zorvcore/threads/RecursiveMutex.h"
#include "zorvcore/threads/ThreadPriority.h"

#include <atomic>
#include <utility>

namespace SN::AudioWaveformQueue
{

using zorvcore::threads::AsyncThreadedExecutor;
using zorvcore::threads::ScopedRecursiveLock;

namespace
{

// Whether an executor was cleared. It and its thread hold one each.
using ClearedMark = std::shared_ptr<std::atomic<bool>>;

// That of the executor whose thread this is; none on other threads.
thread_local ClearedMark sMarkOfThread;

// What the functions share. Never destroyed: jobs that were cleared by one of them may end later than
// this file's statics.
struct State
{
	static State& Instance()
	{
		static auto& state = *new State;
		return state;
	}

	zorvcore::threads::RecursiveMutex mMutex{"SN::AudioWaveformQueue"};
	std::shared_ptr<AsyncThreadedExecutor> mExecutor;
	ClearedMark mMark;
	bool mAborted = false;
};

std::shared_ptr<AsyncThreadedExecutor> CreateExecutor(ClearedMark const& inMark)
{
	auto executor = zorvcore::threads::CreateAsyncThreadedExecutor(
		"SN::AudioWaveformQueue", 1, zorvcore::threads::ThreadPriority::kBackground);
	// Ahead of all jobs, on the one thread.
	executor->Queue([inMark] { sMarkOfThread = inMark; });
	return executor;
}

} // namespace

std::shared_ptr<AsyncThreadedExecutor> GetQueue()
{
	// Whose stop clears the queue.
	EnsureModule();
	State& state = State::Instance();
	ScopedRecursiveLock const lock(state.mMutex, "SN::AudioWaveformQueue::GetQueue");
	if (!state.mExecutor)
	{
		state.mMark = std::make_shared<std::atomic<bool>>(false);
		state.mExecutor = CreateExecutor(state.mMark);
		state.mAborted = false;
	}
	return state.mExecutor;
}

InterfaceRef<IAudioWaveformBuffer> CreateAudioWaveformBuffer()
{
	ScopedRecursiveLock const lock(
		State::Instance().mMutex, "SN::AudioWaveformQueue::CreateAudioWaveformBuffer");
	return MakeAudioWaveformBuffer();
}

void Clear()
{
	std::shared_ptr<AsyncThreadedExecutor> executor;
	{
		State& state = State::Instance();
		ScopedRecursiveLock const lock(state.mMutex, "SN::AudioWaveformQueue::Clear");
		executor.swap(state.mExecutor);
		state.mAborted = true;
		if (executor)
		{
			*state.mMark = true;
		}
	}
	// The executor stops outside the lock, which the last jobs take too.
	if (executor)
	{
		executor->Stop();
		executor->Dispose();
	}
}

void Pause(bool inPause)
{
	State& state = State::Instance();
	ScopedRecursiveLock const lock(state.mMutex, "SN::AudioWaveformQueue::Pause");
	if (state.mExecutor)
	{
		inPause ? state.mExecutor->Pause() : state.mExecutor->Resume();
	}
}

bool IsAborted()
{
	State& state = State::Instance();
	ScopedRecursiveLock const lock(state.mMutex, "SN::AudioWaveformQueue::IsAborted");
	return state.mAborted;
}

bool IsJobAborted()
{
	return sMarkOfThread ? sMarkOfThread->load() : IsAborted();
}

void Shutdown()
{
	Clear();
}

} // namespace SN::AudioWaveformQueue
