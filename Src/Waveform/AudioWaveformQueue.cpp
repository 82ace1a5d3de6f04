#include "Sonaro/AudioWaveformQueue.h"

#include "Waveform/AudioWaveformBuffer.h"
#include "zorvcore/threads/AsyncThreadedExecutor.h"
#include "zorvcore/threads/RecursiveMutex.h"
#include "zorvcore/threads/ThreadPriority.h"

#include <utility>

namespace SN::AudioWaveformQueue
{

using zorvcore::threads::AsyncThreadedExecutor;
using zorvcore::threads::ScopedRecursiveLock;

namespace
{

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
	bool mAborted = false;
};

} // namespace

std::shared_ptr<AsyncThreadedExecutor> GetQueue()
{
	State& state = State::Instance();
	ScopedRecursiveLock const lock(state.mMutex, "SN::AudioWaveformQueue::GetQueue");
	if (!state.mExecutor)
	{
		state.mAborted = false;
		state.mExecutor = zorvcore::threads::CreateAsyncThreadedExecutor(
			"SN::AudioWaveformQueue", 1, zorvcore::threads::ThreadPriority::kBackground);
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
	}
	// Outside the lock, which the last jobs take too.
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

void Shutdown()
{
	Clear();
}

} // namespace SN::AudioWaveformQueue
