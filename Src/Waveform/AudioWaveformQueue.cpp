#include "Sonaro/AudioWaveformQueue.h"

#include "AudioRender/Core/Module.h"
#include "zorvcore/messaging/Stations.h"
#include "zorvcore/threads/AsyncThreadedExecutor.h"
#include "zorvcore/threads/RecursiveMutex.h"
#include "zorvcore/threads/ThreadPriority.h"

#include <atomic>
#include <utility>

namespace SN::AudioWaveformQueue
{

using zorvcore::threads::AsyncThreadedExecutor;
using zorvcore::threads::AtomicIntegral;
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

AtomicIntegral<unsigned> sLastBufferId;

class AudioWaveformBuffer final : public Implements<AudioWaveformBuffer, IAudioWaveformBuffer>
{
public:
	~AudioWaveformBuffer() override
	{
		if (mOwnsStation)
		{
			zorvcore::messaging::DisposeStation(mStationID);
		}
	}

	ImmutableString GetStationID() override { return mStationID; }
	unsigned GetBufferId() override { return mBufferId; }
	unsigned long long GetNumChannels() override { return mChannels.size(); }
	unsigned long long GetNumSamples() override { return mChannels.empty() ? 0 : mChannels.front().size(); }
	unsigned GetSampleCount() override { return static_cast<unsigned>(mSampleCount.Get()); }
	std::vector<std::vector<float>>& GetChannels() override { return mChannels; }
	bool IsComplete() override { return mCompleted.Get() != 0; }
	void Cancel() override { mPending->Exchange(0); }
	bool GetHostFlag() override { return mHostFlag.Get(); }
	void SetHostFlag(bool inFlag) override { mHostFlag.Set(inFlag); }
	void SetComplete() override { mCompleted.Exchange(1); }
	bool IsPending() override { return mPending->Get() != 0; }
	std::shared_ptr<AtomicIntegral<int>> const& GetPending() override { return mPending; }
	void SetSampleCount(unsigned long long inCount) override { mSampleCount.Set(inCount); }
	void SetStationID(ImmutableString const& inStationID) override;
	void SetSecondHostFlag(bool inFlag) override { mSecondHostFlag.Set(inFlag); }
	bool GetSecondHostFlag() override { return mSecondHostFlag.Get(); }
	InterfaceRef<IAudioWaveformBuffer> GetSelfReference() override
	{
		return InterfaceRef<IAudioWaveformBuffer>::FromThis(this);
	}

private:
	std::vector<std::vector<float>> mChannels;
	AtomicIntegral<unsigned long long> mSampleCount;
	AtomicIntegral<bool> mHostFlag;
	std::shared_ptr<AtomicIntegral<int>> const mPending = std::make_shared<AtomicIntegral<int>>(1);
	AtomicIntegral<int> mCompleted;
	ImmutableString mStationID;
	unsigned const mBufferId = sLastBufferId.Add(1);
	AtomicIntegral<bool, true> mSecondHostFlag;
	bool mOwnsStation = false;
};

void AudioWaveformBuffer::SetStationID(ImmutableString const& inStationID)
{
	if (mOwnsStation && !mStationID.IsEmpty())
	{
		zorvcore::messaging::DisposeStation(mStationID);
		mOwnsStation = false;
	}
	if (!inStationID.IsEmpty())
	{
		mStationID = inStationID;
		return;
	}
	mStationID = zorvcore::messaging::RegisterUniqueStation();
	mOwnsStation = true;
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
	return zorvcore::classref::MakeObject<AudioWaveformBuffer>();
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
