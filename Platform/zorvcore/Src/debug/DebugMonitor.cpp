#include "zorvcore/debug/DebugMonitor.h"

#include "zorvcore/debug/Assert.h"
#include "zorvcore/string/StringConversion.h"

#include <atomic>
#include <exception>
#include <map>
#include <mutex>
#include <utility>

namespace zorvcore::debug
{

namespace
{

class Monitor
{
public:
	Monitor(DebugMonitorWriter inWriter, bool inEnabled)
		: mEnabled(inEnabled),
		  mWriter(std::move(inWriter))
	{
	}

	std::u16string Run()
	{
		std::lock_guard const lock(mRunning);
		DebugMonitorStream stream;
		try
		{
			if (mWriter && !mUnregistered)
			{
				mWriter(stream);
			}
		}
		catch (std::exception const& exception)
		{
			DoSimpleAssert(__FILE__, __LINE__, exception.what());
		}
		catch (...)
		{
			DoSimpleAssert(__FILE__, __LINE__, "A debug monitor threw an unknown exception");
		}
		return stream.GetText();
	}

	void Unregister()
	{
		std::lock_guard const lock(mRunning);
		mUnregistered = true;
	}

	std::atomic<bool> mEnabled;

private:
	// Held while the writer runs; recursive, so that the writer may unregister its own monitor.
	std::recursive_mutex mRunning;
	DebugMonitorWriter const mWriter;
	bool mUnregistered = false;
};

using MonitorMap = std::map<std::string, std::shared_ptr<Monitor>, std::less<>>;

// The lock is never held while a writer runs. Never destroyed.
struct MonitorList
{
	static MonitorList& Instance()
	{
		static auto& list = *new MonitorList;
		return list;
	}

	std::shared_ptr<Monitor> Find(std::string_view inName)
	{
		std::lock_guard const lock(mMutex);
		auto const found = mMonitors.find(inName);
		return found == mMonitors.end() ? nullptr : found->second;
	}

	MonitorMap Copy()
	{
		std::lock_guard const lock(mMutex);
		return mMonitors;
	}

	// Puts inMonitor, which may be null, in place of what has the name now, and returns that.
	std::shared_ptr<Monitor> Replace(std::string_view inName, std::shared_ptr<Monitor> inMonitor)
	{
		std::lock_guard const lock(mMutex);
		auto const place = mMonitors.try_emplace(std::string(inName)).first;
		place->second.swap(inMonitor);
		if (!place->second)
		{
			mMonitors.erase(place);
		}
		return inMonitor;
	}

	// Takes inMonitor off when it is what has the name now.
	void Remove(std::string_view inName, std::shared_ptr<void> const& inMonitor)
	{
		std::lock_guard const lock(mMutex);
		auto const found = mMonitors.find(inName);
		if (found != mMonitors.end() && found->second == inMonitor)
		{
			mMonitors.erase(found);
		}
	}

	std::mutex mMutex;
	MonitorMap mMonitors;
};

void Replace(std::string_view inName, std::shared_ptr<Monitor> inMonitor)
{
	if (auto const former = MonitorList::Instance().Replace(inName, std::move(inMonitor)))
	{
		former->Unregister();
	}
}

} // namespace

DebugMonitorStream& DebugMonitorStream::operator<<(std::string_view inText)
{
	mText += string::UTF8to16(inText);
	return *this;
}

DebugMonitorRegistration::DebugMonitorRegistration(DebugMonitorRegistration&& ioOther) noexcept = default;

DebugMonitorRegistration& DebugMonitorRegistration::operator=(DebugMonitorRegistration&& ioOther) noexcept
{
	DebugMonitorRegistration former(std::move(*this));
	mName = std::move(ioOther.mName);
	mMonitor = std::move(ioOther.mMonitor);
	return *this;
}

DebugMonitorRegistration::~DebugMonitorRegistration()
{
	if (mMonitor)
	{
		MonitorList::Instance().Remove(mName, mMonitor);
		static_cast<Monitor*>(mMonitor.get())->Unregister();
	}
}

DebugMonitorRegistration RegisterDebugMonitorCallback(
	std::string_view inName, DebugMonitorWriter inWriter, bool inEnabled)
{
	auto const monitor = std::make_shared<Monitor>(std::move(inWriter), inEnabled);
	Replace(inName, monitor);
	DebugMonitorRegistration registration;
	registration.mName = inName;
	registration.mMonitor = monitor;
	return registration;
}

void UnregisterDebugMonitorCallback(std::string_view inName)
{
	Replace(inName, nullptr);
}

std::vector<std::string> GetDebugMonitorNames()
{
	std::vector<std::string> names;
	for (auto const& [name, monitor] : MonitorList::Instance().Copy())
	{
		names.push_back(name);
	}
	return names;
}

std::u16string GetDebugMonitorText(std::string_view inName)
{
	auto const monitor = MonitorList::Instance().Find(inName);
	return monitor ? monitor->Run() : std::u16string();
}

std::u16string GetDebugMonitorTexts()
{
	DebugMonitorStream stream;
	for (auto const& [name, monitor] : MonitorList::Instance().Copy())
	{
		if (monitor->mEnabled)
		{
			stream << std::string_view(name) << u"\n" << monitor->Run() << u"\n";
		}
	}
	return stream.GetText();
}

void SetDebugMonitorEnabled(std::string_view inName, bool inEnabled)
{
	if (auto const monitor = MonitorList::Instance().Find(inName))
	{
		monitor->mEnabled = inEnabled;
	}
}

} // namespace zorvcore::debug
