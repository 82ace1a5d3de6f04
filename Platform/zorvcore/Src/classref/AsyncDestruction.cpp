#include "zorvcore/classref/AsyncDestruction.h"

#include "../threads/ProcessEnd.h"
#include "zorvcore/debug/Assert.h"
#include "zorvcore/threads/AsyncThreadedExecutor.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>

namespace zorvcore::classref
{

namespace
{

// Runs the function and lets go of what it holds.
void RunAndRelease(std::function<void()>& ioDestroy) noexcept
{
	try
	{
		ioDestroy();
	}
	catch (std::exception const& exception)
	{
		debug::DoSimpleAssert(__FILE__, __LINE__, exception.what());
	}
	catch (...)
	{
		debug::DoSimpleAssert(__FILE__, __LINE__, "A destruction threw an unknown exception");
	}
	ioDestroy = nullptr;
}

// The background thread and what it has still to destroy. Never destroyed itself.
class Destroyer
{
public:
	static Destroyer& Instance()
	{
		static auto& destroyer = Create();
		return destroyer;
	}

	// Null until something was handed over.
	static Destroyer* InstanceIfUsed() { return sInstance.load(std::memory_order_acquire); }

	// Takes the function only when it returns true: not when the thread is gone, or memory or threads
	// run out.
	bool Queue(std::function<void()>& ioDestroy)
	{
		std::lock_guard const lock(mMutex);
		mWaiting.push_back(std::move(ioDestroy));
		bool queued = false;
		try
		{
			queued = mExecutor->Queue([this] { DestroyNext(); });
		}
		catch (std::exception const&)
		{
			queued = false;
		}
		if (queued)
		{
			++mPending;
		}
		else
		{
			ioDestroy = std::move(mWaiting.back());
			mWaiting.pop_back();
		}
		return queued;
	}

	void Wait()
	{
		if (!sOnThread)
		{
			std::unique_lock lock(mMutex);
			mDone.wait(lock, [this] { return mPending == 0; });
		}
	}

	void End()
	{
		Wait();
		mExecutor->Dispose();
	}

private:
	// Its thread ends when the process ends or the library goes. What is handed over later, by statics that live longer, is
	// destroyed by its caller.
	static Destroyer& Create()
	{
		auto& destroyer = *new Destroyer;
		sInstance.store(&destroyer, std::memory_order_release);
		threads::CallAtProcessEnd([] { InstanceIfUsed()->End(); });
		return destroyer;
	}

	void DestroyNext()
	{
		sOnThread = true;
		std::unique_lock lock(mMutex);
		std::function<void()> destroy = std::move(mWaiting.front());
		mWaiting.pop_front();
		lock.unlock();
		RunAndRelease(destroy);
		lock.lock();
		if (--mPending == 0)
		{
			mDone.notify_all();
		}
	}

	static std::atomic<Destroyer*> sInstance;
	static thread_local bool sOnThread;

	std::shared_ptr<threads::AsyncThreadedExecutor> const mExecutor =
		threads::CreateAsyncThreadedExecutor("zorv::Destroy");
	std::mutex mMutex;
	std::condition_variable mDone;
	std::deque<std::function<void()>> mWaiting;
	std::size_t mPending = 0;
};

constinit std::atomic<Destroyer*> Destroyer::sInstance{nullptr};
thread_local bool Destroyer::sOnThread = false;

} // namespace

void detail::CallAsyncDestructionHelper(std::function<void()> inDestroy) noexcept
{
	bool queued = false;
	try
	{
		queued = Destroyer::Instance().Queue(inDestroy);
	}
	catch (std::exception const&)
	{
		queued = false;
	}
	if (!queued)
	{
		RunAndRelease(inDestroy);
	}
}

void WaitForAsyncDestruction()
{
	if (Destroyer* const destroyer = Destroyer::InstanceIfUsed())
	{
		destroyer->Wait();
	}
}

} // namespace zorvcore::classref
