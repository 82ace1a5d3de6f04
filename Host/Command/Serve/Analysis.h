#pragma once

#include "EventHub.h"
#include "SonaroHost/Serve/ServedTimeline.h"

#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <stop_token>
#include <string>
#include <thread>

namespace SonaroCommand::Serve
{

// The report of a timeline and its loudness over time, measured on a thread of its own once somebody asks, with progress
// events.
// Threads: any.
class Analysis
{
public:
	struct Texts
	{
		// That of "sonaro render --report".
		std::string mReport;
		// The loudness of the mix every 0.1 seconds.
		std::string mLoudness;
	};

	// ioEvents outlives this and gets "progress".
	explicit Analysis(EventHub& ioEvents);
	~Analysis();
	Analysis(Analysis const&) = delete;
	Analysis& operator=(Analysis const&) = delete;

	// Those of this timeline; what is measured of a former one is given up. Throws a TooBusyError when they are not there
	// by the deadline, and a HostError.
	std::shared_ptr<Texts const> Get(std::shared_ptr<SonaroHost::Serve::ServedTimeline> const& inTimeline,
		SonaroHost::Serve::MixFile::Clock::time_point inDeadline);

private:
	void Begin(std::shared_ptr<SonaroHost::Serve::ServedTimeline> const& inTimeline);
	Texts Measure(SonaroHost::Serve::ServedTimeline const& inTimeline, std::stop_token const& inStop);

	EventHub& mEvents;
	std::mutex mMutex;
	std::condition_variable mChanged;
	// What follows is of the timeline with this tag.
	std::string mTag;
	std::shared_ptr<Texts const> mTexts;
	std::exception_ptr mFailure;
	std::jthread mThread;
};

} // namespace SonaroCommand::Serve
