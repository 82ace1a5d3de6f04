#include "zorvcore/threads/AsyncThreadedExecutor.h"

#include "zorvcore/debug/Assert.h"
#include "zorvcore/threads/CurrentThread.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace zorvcore::threads
{

namespace
{

// What the executor and its threads share. The threads own it too, so that detached ones can finish
// after the executor is gone.
class Worker : public std::enable_shared_from_this<Worker>
{
public:
	Worker(std::string_view inName, unsigned inThreadCount, ThreadPriority inPriority)
		: mName(inName),
		  mMaxThreads(std::max(inThreadCount, 1u)),
		  mPriority(inPriority)
	{
	}

	bool Queue(std::function<void()> inTask)
	{
		std::lock_guard const lock(mMutex);
		if (mStopped)
		{
			return false;
		}
		mTasks.push_back(std::move(inTask));
		if (mTasks.size() > mWaitingThreads && mThreads.size() < mMaxThreads)
		{
			StartThread();
		}
		mWork.notify_one();
		return true;
	}

	void SetPaused(bool inPaused)
	{
		std::lock_guard const lock(mMutex);
		mPaused = inPaused;
		mWork.notify_all();
	}

	void Stop()
	{
		std::unique_lock lock(mMutex);
		mStopped = true;
		mWork.notify_all();
		if (sCurrentWorker != this)
		{
			mDrained.wait(lock, [this] { return mTasks.empty() && mRunningTasks == 0; });
		}
	}

	void Dispose()
	{
		Stop();
		std::unique_lock lock(mMutex);
		std::vector<std::thread> threads = std::exchange(mThreads, {});
		if (sCurrentWorker == this)
		{
			std::for_each(threads.begin(), threads.end(), [](std::thread& ioThread) { ioThread.detach(); });
			return;
		}
		++mJoiningCalls;
		lock.unlock();
		std::for_each(threads.begin(), threads.end(), [](std::thread& ioThread) { ioThread.join(); });
		lock.lock();
		--mJoiningCalls;
		mDrained.notify_all();
		// Another call may have taken the threads, to join or to detach them.
		mDrained.wait(lock, [this] { return mJoiningCalls == 0 && mLiveThreads == 0; });
	}

private:
	// Called with the lock held, after a task was queued.
	void StartThread()
	{
		try
		{
			mThreads.reserve(mThreads.size() + 1);
			mThreads.emplace_back([self = shared_from_this()] { self->RunThread(); });
			++mLiveThreads;
		}
		catch (...)
		{
			if (mThreads.empty())
			{
				mTasks.pop_back();
				throw;
			}
		}
	}

	void RunThread()
	{
		sCurrentWorker = this;
		SetCurrentThreadName(mName.c_str());
		SetCurrentThreadPriority(mPriority);
		std::unique_lock lock(mMutex);
		while (WaitForTask(lock))
		{
			std::function<void()> task = std::move(mTasks.front());
			mTasks.pop_front();
			++mRunningTasks;
			lock.unlock();
			RunTask(task);
			// What the task holds goes before the task counts as done, and outside the lock, since it may
			// come back here when it goes.
			task = nullptr;
			lock.lock();
			--mRunningTasks;
			if (mTasks.empty() && mRunningTasks == 0)
			{
				mDrained.notify_all();
			}
		}
		--mLiveThreads;
		mDrained.notify_all();
	}

	// False when the executor was stopped and nothing is left to do. A stop outweighs a pause.
	bool WaitForTask(std::unique_lock<std::mutex>& ioLock)
	{
		++mWaitingThreads;
		mWork.wait(ioLock, [this] { return mStopped || (!mPaused && !mTasks.empty()); });
		--mWaitingThreads;
		return !mTasks.empty();
	}

	void RunTask(std::function<void()> const& inTask) const noexcept
	{
		try
		{
			inTask();
		}
		catch (std::exception const& exception)
		{
			ReportException(exception.what());
		}
		catch (...)
		{
			ReportException("unknown exception");
		}
	}

	void ReportException(std::string_view inWhat) const
	{
		std::string message = "A task of \"" + mName + "\" threw: ";
		message += inWhat;
		debug::DoSimpleAssert(__FILE__, __LINE__, message);
	}

	// The worker that the thread belongs to.
	static thread_local Worker const* sCurrentWorker;

	std::string const mName;
	unsigned const mMaxThreads;
	ThreadPriority const mPriority;

	std::mutex mMutex;
	std::condition_variable mWork;
	std::condition_variable mDrained;
	std::deque<std::function<void()>> mTasks;
	std::vector<std::thread> mThreads;
	// Calls of Dispose that wait for threads to end.
	std::size_t mJoiningCalls = 0;
	// Threads that have been started and have tasks to wait for.
	std::size_t mLiveThreads = 0;
	std::size_t mWaitingThreads = 0;
	std::size_t mRunningTasks = 0;
	bool mPaused = false;
	bool mStopped = false;
};

thread_local Worker const* Worker::sCurrentWorker = nullptr;

class ThreadedExecutor final : public AsyncThreadedExecutor
{
public:
	ThreadedExecutor(std::string_view inName, unsigned inThreadCount, ThreadPriority inPriority)
		: mWorker(std::make_shared<Worker>(inName, inThreadCount, inPriority))
	{
	}
	~ThreadedExecutor() override { mWorker->Dispose(); }

	bool Queue(std::function<void()> inTask) override { return mWorker->Queue(std::move(inTask)); }
	void Pause() override { mWorker->SetPaused(true); }
	void Resume() override { mWorker->SetPaused(false); }
	void Stop() override { mWorker->Stop(); }
	void Dispose() override { mWorker->Dispose(); }

private:
	std::shared_ptr<Worker> const mWorker;
};

} // namespace

AsyncThreadedExecutor::~AsyncThreadedExecutor() = default;

std::shared_ptr<AsyncThreadedExecutor> CreateAsyncThreadedExecutor(
	std::string_view inName, unsigned inThreadCount, ThreadPriority inPriority)
{
	return std::make_shared<ThreadedExecutor>(inName, inThreadCount, inPriority);
}

} // namespace zorvcore::threads
