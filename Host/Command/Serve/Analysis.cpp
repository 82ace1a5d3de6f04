#include "Analysis.h"

#include "Report/Levels.h"
#include "Report/TimelineRenderReport.h"
#include "SonaroHost/Metering/LoudnessSeries.h"
#include "SonaroHost/Render/TimelineRenderJob.h"
#include "SonaroHost/Serve/TooBusyError.h"

#include <cmath>
#include <utility>

namespace SonaroCommand::Serve
{

using namespace SonaroHost;
using namespace SonaroHost::Serve;

namespace
{

// To a hundredth; silence is null.
Json MakeLoudnessValue(double inLufs)
{
	constexpr double kSteps = 100.0;
	return std::isfinite(inLufs) ? Json(std::round(inLufs * kSteps) / kSteps) : Json();
}

Json MakeLoudness(std::optional<LoudnessReading> const& inMix)
{
	Json json{{"integratedLufs", nullptr}, {"stepSeconds", 0.1}, {"momentary", Json::array()},
		{"shortTerm", Json::array()}};
	if (!inMix || !inMix->mSeries)
	{
		return json;
	}
	LoudnessSeries const& series = *inMix->mSeries;
	json["integratedLufs"] = MakeLoudnessValue(inMix->mIntegrated);
	json["stepSeconds"] = series.GetStepSeconds();
	for (std::size_t step = 0; step < series.GetNumSteps(); ++step)
	{
		json["momentary"].push_back(MakeLoudnessValue(series.GetMomentary(step)));
		json["shortTerm"].push_back(MakeLoudnessValue(series.GetShortTerm(step)));
	}
	return json;
}

} // namespace

Analysis::Analysis(EventHub& ioEvents)
	: mEvents(ioEvents)
{
}

Analysis::~Analysis() = default;

std::shared_ptr<Analysis::Texts const> Analysis::Get(
	std::shared_ptr<ServedTimeline> const& inTimeline, MixFile::Clock::time_point inDeadline)
{
	std::unique_lock lock(mMutex);
	std::string const tag = inTimeline->GetTag();
	if (mTag != tag)
	{
		std::jthread former = std::exchange(mThread, {});
		mTag = tag;
		mTexts = nullptr;
		mFailure = nullptr;
		lock.unlock();
		// It sees soon that it is to stop.
		former = {};
		lock.lock();
		if (mTag == tag && !mThread.joinable())
		{
			Begin(inTimeline);
		}
	}
	auto const isDone = [&] { return mTag != tag || mTexts || mFailure; };
	if (!mChanged.wait_until(lock, inDeadline, isDone) || mTag != tag)
	{
		throw TooBusyError("the timeline is being measured; try again later");
	}
	if (mFailure)
	{
		std::rethrow_exception(mFailure);
	}
	return mTexts;
}

// Called with the lock.
void Analysis::Begin(std::shared_ptr<ServedTimeline> const& inTimeline)
{
	mThread = std::jthread(
		[this, inTimeline](std::stop_token const& inStop)
		{
			std::shared_ptr<Texts const> texts;
			std::exception_ptr failure;
			try
			{
				texts = std::make_shared<Texts const>(Measure(*inTimeline, inStop));
			}
			catch (...)
			{
				failure = std::current_exception();
			}
			std::lock_guard const lock(mMutex);
			if (mTag == inTimeline->GetTag())
			{
				mTexts = std::move(texts);
				mFailure = failure;
			}
			mChanged.notify_all();
		});
}

Analysis::Texts Analysis::Measure(ServedTimeline const& inTimeline, std::stop_token const& inStop)
{
	Otio::TimelineRenderRequest request;
	request.mInput = inTimeline.GetRequest().mInput;
	request.mMediaFolders = inTimeline.GetRequest().mMediaFolders;
	request.mOptions = inTimeline.GetRequest().mOptions;
	request.mMeasuring = Measuring::kTracks;
	request.mKeepsSeries = true;
	Otio::TimelineRenderJob job(request);
	int lastPercent = -1;
	auto const report = [&](RenderProgress const& inProgress)
	{
		int const percent = static_cast<int>(inProgress.mFramesDone * 100 / inProgress.mFramesTotal);
		if (percent / 5 != lastPercent / 5)
		{
			lastPercent = percent;
			mEvents.Post("progress", Json{{"what", "report"}, {"percent", percent}}.dump());
		}
	};
	auto const summary = job.Run(report, inStop);
	if (!summary)
	{
		throw TooBusyError("the timeline has changed; try again");
	}
	return {ToText(MakeReport(inTimeline.GetRequest().mInput.string(), job, *summary, request.mLevels)),
		MakeLoudness(summary->mMix).dump() + "\n"};
}

} // namespace SonaroCommand::Serve
