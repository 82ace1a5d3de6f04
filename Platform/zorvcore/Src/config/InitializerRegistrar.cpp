#include "zorvcore/config/InitializerRegistrar.h"

#include "zorvcore/classref/AsyncDestruction.h"
#include "zorvcore/debug/Assert.h"

#include <exception>
#include <mutex>
#include <utility>
#include <vector>

namespace zorvcore::config
{

// The registered modules in the order of their registration. The lock is held while modules start and
// stop, and recursive because a start may load a library with modules of its own. It is let go, on all
// levels, while background destruction is awaited: an object that dies there may load or unload a library.
// Never destroyed.
class ModuleList
{
public:
	static ModuleList& Instance()
	{
		static auto& list = *new ModuleList;
		return list;
	}

	void Add(InitializerRegistrar& inModule)
	{
		Lock const lock(*this);
		mModules.push_back(&inModule);
		if (mRunning)
		{
			inModule.Start();
		}
	}

	void Remove(InitializerRegistrar& inModule)
	{
		Lock const lock(*this);
		bool const wasStarted = inModule.Stop();
		std::erase(mModules, &inModule);
		if (wasStarted)
		{
			AwaitDestruction();
		}
	}

	// The loops go by index, since a module may register or go while another starts or stops.
	void StartAll()
	{
		std::lock_guard const change(mChangeMutex);
		Lock const lock(*this);
		mRunning = true;
		for (std::size_t i = 0; i < mModules.size(); ++i)
		{
			mModules[i]->Start();
		}
	}

	void StopAll()
	{
		std::lock_guard const change(mChangeMutex);
		Lock const lock(*this);
		mRunning = false;
		for (std::size_t i = mModules.size(); i-- > 0;)
		{
			if (i < mModules.size() && mModules[i]->Stop())
			{
				AwaitDestruction();
			}
		}
	}

	bool IsStarted(InitializerRegistrar const& inModule)
	{
		Lock const lock(*this);
		return inModule.mStarted;
	}

private:
	class Lock
	{
	public:
		explicit Lock(ModuleList& ioList)
			: mList(ioList)
		{
			mList.mMutex.lock();
			++mList.mDepth;
		}
		~Lock()
		{
			--mList.mDepth;
			mList.mMutex.unlock();
		}
		Lock(Lock const&) = delete;
		Lock& operator=(Lock const&) = delete;

	private:
		ModuleList& mList;
	};

	// Called with the lock held.
	void AwaitDestruction()
	{
		unsigned const depth = std::exchange(mDepth, 0u);
		for (unsigned level = 0; level < depth; ++level)
		{
			mMutex.unlock();
		}
		classref::WaitForAsyncDestruction();
		for (unsigned level = 0; level < depth; ++level)
		{
			mMutex.lock();
		}
		mDepth = depth;
	}

	// Keeps a start and a stop of all modules apart, also while the lock is let go. Taken before mMutex.
	std::recursive_mutex mChangeMutex;
	std::recursive_mutex mMutex;
	// How often the thread that holds mMutex has locked it.
	unsigned mDepth = 0;
	std::vector<InitializerRegistrar*> mModules;
	bool mRunning = true;
};

namespace
{

void ReportFailure(std::string const& inName, char const* inWhat)
{
	debug::DoSimpleAssert(__FILE__, __LINE__, "Module \"" + inName + "\": " + inWhat);
}

} // namespace

InitializerRegistrar::InitializerRegistrar(
	char const* inName, unsigned, StartFunction inStart, StopFunction inStop)
	: mName(inName),
	  mStart(inStart),
	  mStop(inStop)
{
	ModuleList::Instance().Add(*this);
}

InitializerRegistrar::~InitializerRegistrar()
{
	ModuleList::Instance().Remove(*this);
}

bool InitializerRegistrar::IsStarted() const
{
	return ModuleList::Instance().IsStarted(*this);
}

void InitializerRegistrar::Start()
{
	if (mStarted)
	{
		return;
	}
	try
	{
		mStarted = !mStart || mStart();
		if (!mStarted)
		{
			ReportFailure(mName, "the start failed");
		}
	}
	catch (std::exception const& exception)
	{
		ReportFailure(mName, exception.what());
	}
	catch (...)
	{
		ReportFailure(mName, "the start threw an unknown exception");
	}
}

bool InitializerRegistrar::Stop()
{
	if (!mStarted)
	{
		return false;
	}
	mStarted = false;
	try
	{
		if (mStop)
		{
			mStop();
		}
	}
	catch (std::exception const& exception)
	{
		ReportFailure(mName, exception.what());
	}
	catch (...)
	{
		ReportFailure(mName, "the stop threw an unknown exception");
	}
	return true;
}

void StopRegisteredModules()
{
	ModuleList::Instance().StopAll();
}

void StartRegisteredModules()
{
	ModuleList::Instance().StartAll();
}

} // namespace zorvcore::config
