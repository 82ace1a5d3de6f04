#include "TimelineWatch.h"

#include "Report/Json.h"
#include "Terminal/Console.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <utility>

namespace SonaroCommand::Serve
{

namespace
{

using LookTime = std::chrono::steady_clock::duration;
constexpr LookTime kLookTime = std::chrono::milliseconds(500);
// Pauses are so many times as long as an attempt, so that a large timeline that stays broken takes little of a core.
constexpr int kPauseFactor = 10;

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
	for (LookTime pause = kLookTime; !inStop.stop_requested();)
	{
		{
			std::unique_lock lock(mMutex);
			mStopped.wait_for(lock, inStop, pause, [] { return false; });
		}
		auto const begin = std::chrono::steady_clock::now();
		if (!inStop.stop_requested())
		{
			Look();
		}
		ReportProblem();
		pause = std::max(kLookTime, kPauseFactor * (std::chrono::steady_clock::now() - begin));
	}
}

void TimelineWatch::Look()
{
	if (!Get()->IsCurrent())
	{
		Reload();
		return;
	}
	std::unique_lock lock(mMutex);
	if (!std::exchange(mProblem, {}).empty())
	{
		// The former state is back, as after a file was moved away for a while.
		std::string const tag = mTimeline->GetTag();
		lock.unlock();
		mEvents.Post("reload", MakeLine({{"tag", tag}}));
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
