#include "TimelineWatch.h"

#include "Report/Json.h"
#include "Terminal/Console.h"

#include <chrono>
#include <exception>
#include <utility>

namespace SonaroCommand::Serve
{

namespace
{

constexpr auto kLookTime = std::chrono::milliseconds(500);

// On one line, as events want it.
std::string MakeLine(Json const& inJson)
{
	return inJson.dump(-1, ' ', false, Json::error_handler_t::replace);
}

} // namespace

TimelineWatch::TimelineWatch(SonaroHost::Serve::ServeRequest inRequest, EventHub& ioEvents)
	: mRequest(std::move(inRequest)),
	  mEvents(ioEvents),
	  mTimeline(std::make_shared<SonaroHost::Serve::ServedTimeline>(mRequest)),
	  mThread([this](std::stop_token const& inStop) { Watch(inStop); })
{
}

std::shared_ptr<SonaroHost::Serve::ServedTimeline> TimelineWatch::Get() const
{
	std::lock_guard const lock(mMutex);
	return mTimeline;
}

std::string TimelineWatch::GetProblem() const
{
	std::lock_guard const lock(mMutex);
	return mProblem.empty() ? mTimeline->GetProblem() : mProblem;
}

void TimelineWatch::Watch(std::stop_token const& inStop)
{
	while (!inStop.stop_requested())
	{
		{
			std::unique_lock lock(mMutex);
			mStopped.wait_for(lock, inStop, kLookTime, [] { return false; });
		}
		if (!inStop.stop_requested() && !Get()->IsCurrent())
		{
			Reload();
		}
		ReportProblem();
	}
}

void TimelineWatch::ReportProblem()
{
	std::string const problem = Get()->GetProblem();
	if (!problem.empty() && problem != mReported)
	{
		PrintWarning(problem);
		mEvents.Post("problem", MakeLine({{"error", problem}}));
	}
	mReported = problem;
}

void TimelineWatch::Reload()
{
	try
	{
		auto timeline = std::make_shared<SonaroHost::Serve::ServedTimeline>(mRequest);
		std::string const tag = timeline->GetTag();
		{
			std::lock_guard const lock(mMutex);
			mTimeline.swap(timeline);
			mProblem.clear();
		}
		mEvents.Post("reload", MakeLine({{"tag", tag}}));
	}
	catch (std::exception const& error)
	{
		{
			std::lock_guard const lock(mMutex);
			if (mProblem == error.what())
			{
				return;
			}
			mProblem = error.what();
		}
		mEvents.Post("problem", MakeLine({{"error", error.what()}}));
	}
}

} // namespace SonaroCommand::Serve
