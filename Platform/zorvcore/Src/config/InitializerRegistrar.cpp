#include "zorvcore/config/InitializerRegistrar.h"

#include "zorvcore/classref/AsyncDestruction.h"
#include "zorvcore/debug/Assert.h"

#include <exception>
#include <mutex>
#include <vector>

namespace zorvcore::config
{

// The registered modules in the order of their registration. The mutex is held while modules start and
// stop, and recursive because a start may load a library with modules of its own. Never destroyed.
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
		std::lock_guard const lock(mMutex);
		mModules.push_back(&inModule);
		if (mRunning)
		{
			inModule.Start();
		}
	}

	void Remove(InitializerRegistrar& inModule)
	{
		std::lock_guard const lock(mMutex);
		inModule.Stop();
		std::erase(mModules, &inModule);
	}

	// By index, since a module may register or go while another starts or stops.
	void StartAll()
	{
		std::lock_guard const lock(mMutex);
		mRunning = true;
		for (std::size_t i = 0; i < mModules.size(); ++i)
		{
			mModules[i]->Start();
		}
	}

	void StopAll()
	{
		std::lock_guard const lock(mMutex);
		mRunning = false;
		for (std::size_t i = mModules.size(); i-- > 0;)
		{
			if (i < mModules.size())
			{
				mModules[i]->Stop();
			}
		}
	}

	bool IsStarted(InitializerRegistrar const& inModule)
	{
		std::lock_guard const lock(mMutex);
		return inModule.mStarted;
	}

private:
	std::recursive_mutex mMutex;
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

void InitializerRegistrar::Stop()
{
	if (!mStarted)
	{
		return;
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
	classref::WaitForAsyncDestruction();
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
