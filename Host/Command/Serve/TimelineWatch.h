#pragma once

#include "EventHub.h"
#include "SonaroHost/Serve/ServedTimeline.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <stop_token>
#include <string>
#include <thread>

namespace SonaroCommand::Serve
{

// The timeline as it is now: opened anew when it or its media change, by a thread that looks every half second. Where that
// fails, as with a file that is half saved, the former one goes on, and the reason is kept until it succeeds.
// Threads: any.
class TimelineWatch
{
public:
	// Opens it first. Throws a HostError. ioEvents outlives this and gets "reload" and "problem".
	TimelineWatch(SonaroHost::Serve::ServeRequest inRequest, EventHub& ioEvents);

	std::shared_ptr<SonaroHost::Serve::ServedTimeline> Get() const;
	// Why the present state of the file cannot be served, or something of it cannot be rendered; empty when all can.
	std::string GetProblem() const;

private:
	void Watch(std::stop_token const& inStop);
	// Compares with the disk, and follows it.
	void Look();
	void Reload();
	// Says once what could not be rendered.
	void ReportProblem();

	SonaroHost::Serve::ServeRequest mRequest;
	EventHub& mEvents;
	mutable std::mutex mMutex;
	std::condition_variable_any mStopped;
	std::shared_ptr<SonaroHost::Serve::ServedTimeline> mTimeline;
	std::string mProblem;
	// The watching thread's.
	std::string mReported;
	std::jthread mThread;
};

} // namespace SonaroCommand::Serve
