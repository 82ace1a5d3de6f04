#include "TimelineRender.h"

#include "Command.h"
#include "Options/SharedOptions.h"
#include "Page/PagePictures.h"
#include "Page/ReportPage.h"
#include "Report/RenderedFileRows.h"
#include "Report/ReportFile.h"
#include "Report/StrictRender.h"
#include "Report/TimelineNotes.h"
#include "Report/TimelineRenderReport.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Files/StandardStreams.h"
#include "SonaroHost/Render/TimelineFarm.h"
#include "Terminal/Caller.h"
#include "Terminal/Console.h"

#include <algorithm>
#include <utility>

namespace SonaroCommand
{

using namespace SonaroHost;
using namespace SonaroHost::Otio;

TimelineRender::TimelineRender(CLI::App& ioParser, RenderOptions const& inShared)
	: mParser(ioParser),
	  mShared(inShared)
{
}

void TimelineRender::AddOptions()
{
	mParser
		.add_option("--range", mRange,
			"Render only this part: START..END, START.., ..END, START+DURATION or the name of a marker. "
			"START and END are times, timecode or names of markers")
		->option_text("RANGE");
	mParser.add_option("--stems", mStems, "Write one file per track or per marker into the folder OUTPUT")
		->option_text("WHAT")
		->check(CLI::IsMember({"track", "marker"}));
	AddTimelineOptions(mParser, mMediaFolders, mFades);
}

bool TimelineRender::IsMeant(std::vector<std::string> const& inInputs) const
{
	auto const found =
		std::ranges::find_if(inInputs, [](std::string const& inInput) { return IsTimelinePath(inInput); });
	if (found != inInputs.end() && inInputs.size() > 1)
	{
		Refuse(
			QuotePath(*found) + " is a timeline and cannot be combined with other inputs; render it alone");
	}
	return found != inInputs.end();
}

int TimelineRender::Run(std::string const& inInput)
{
	MakeRoomForOutputs({mShared.mOutput, mShared.mReport});
	TimelineRenderJob job(MakeRequest(inInput));
	if (mShared.mJoined)
	{
		CheckPlan(mShared.mJoined->mPlan, MakeRequest(inInput), job, mShared.mJoined->mProgram);
	}
	WarnOfNotes(job.GetSequence().mMissing, job.GetNotes());
	CheckReport(mShared, mStems.empty() ? ReportFolder::kIsThere : ReportFolder::kIsMade);
	CheckStrictly(job, inInput);
	auto const summary =
		RunStrictly(job, mShared, [&](std::string const& inReason) { WriteRefusal(job, inInput, inReason); });
	WarnOfLevels(summary);
	WarnOfDamage(summary);
	WarnOfUnlearnedNoise(summary);
	FinishAfter(mShared.mOutput, [&] { Report(job, inInput, summary); });
	bool const isComplete = job.GetSequence().mMissing.empty() && ListMissingEffects(job.GetNotes()).empty();
	return isComplete ? kExitSuccess : kExitMissing;
}

TimelineRenderRequest TimelineRender::MakeRequest(std::string const& inInput) const
{
	TimelineRenderRequest request;
	mShared.Fill(request);
	request.mInput = inInput;
	request.mText = FindTimelineText(inInput);
	request.mMediaFolders.assign(mMediaFolders.begin(), mMediaFolders.end());
	if (!mStems.empty() && IsStandardStream(mShared.mOutput))
	{
		Refuse("--stems writes several files; use -o with a folder instead of -");
	}
	request.mStems = mStems.empty() ? Stems::kNone : mStems == "track" ? Stems::kTracks : Stems::kMarkers;
	// A folder's name ends in nothing.
	bool const isFolder = request.mStems != Stems::kNone && mShared.mFormat.empty();
	request.mContainer = isFolder ? OutputContainer::kWav : mShared.ChooseContainer();
	request.mOptions.mSampleRate = mShared.mSampleRate;
	request.mOptions.mLayout = mShared.ParseLayout();
	request.mOptions.mFadeShape = ParseFades(mFades);
	request.mOptions.mResampling = mShared.ChooseResampling();
	mShared.mStretch.Fill(request.mOptions);
	request.mOptions.mListener = mShared.mListener.MakeListener();
	request.mRange = mRange;
	request.mKeepsRows = !mShared.mReport.empty();
	if (mShared.mJoined)
	{
		request.mPieces = mShared.mJoined->mPieces;
		request.mOtherInputs = mShared.mJoined->mFiles;
	}
	return request;
}

std::string const& TimelineRender::ShowInput(std::string const& inInput) const
{
	return mShared.mJoined ? mShared.mJoined->mPlan.mInput : inInput;
}

void TimelineRender::CheckStrictly(TimelineRenderJob const& inJob, std::string const& inInput) const
{
	std::size_t const missing = inJob.GetSequence().mMissing.size();
	std::size_t const effects = ListMissingEffects(inJob.GetNotes()).size();
	bool const isGuessed = mShared.IsStrictInAll() && HasGuesses(inJob.GetNotes());
	if (!mShared.IsStrict() || (missing == 0 && effects == 0 && !isGuessed))
	{
		return;
	}
	std::string const reason =
		missing > 0 ? std::to_string(missing) + (missing == 1 ? " clip has no media" : " clips have no media")
		: effects > 0 ? std::to_string(effects) + (effects == 1 ? " effect is" : " effects are") + " missing"
					  : std::string("parts of the timeline were guessed, ignored or not read");
	WriteRefusal(inJob, inInput, reason);
	throw HostError(HostError::Kind::kInput, DescribeStrictRefusal(mShared, reason) + "; see the warnings");
}

void TimelineRender::WriteRefusal(
	TimelineRenderJob const& inJob, std::string const& inInput, std::string const& inReason) const
{
	if (!mShared.mReport.empty())
	{
		WriteReport(mShared, DescribeReport(inJob, inInput, {}, inReason));
	}
	if (mShared.mAsJson)
	{
		PrintResult(SummarizeForMachines(ShowInput(inInput), inJob, {}, mShared.mLevels, inReason));
	}
}

std::string TimelineRender::DescribeReport(TimelineRenderJob const& inJob, std::string const& inInput,
	RenderSummary const& inSummary, std::string const& inRefusal) const
{
	Json const report = MakeReport(ShowInput(inInput), inJob, inSummary, mShared.mLevels, inRefusal);
	if (!mShared.WantsPage())
	{
		return ToText(report);
	}
	std::vector<std::string> tracks;
	for (TrackRow const& row : inJob.GetSequence().mTracks)
	{
		tracks.push_back(row.mTrack);
	}
	Page::ReportPictures pictures =
		Page::MakePictures(mParser, mShared.mLevels.mNormalizeLoudness, inSummary, tracks);
	if (inRefusal.empty())
	{
		TimelineRenderRequest const asked = MakeRequest(inInput);
		TimelineWaveformRequest request;
		request.mInput = asked.mInput;
		request.mText = asked.mText;
		request.mMediaFolders = asked.mMediaFolders;
		request.mOptions = asked.mOptions;
		Page::AddTimelineWaveform(
			std::move(request), inJob.GetSequence().mMissing, mShared.mIsQuiet, pictures);
	}
	return Page::MakeReportPage(report, pictures);
}

void TimelineRender::Report(
	TimelineRenderJob const& inJob, std::string const& inInput, RenderSummary const& inSummary) const
{
	if (!mShared.mReport.empty())
	{
		WriteReport(mShared, DescribeReport(inJob, inInput, inSummary, {}));
	}
	if (mShared.mAsJson || !mShared.mIsQuiet)
	{
		PrintResult(mShared.mAsJson
						? SummarizeForMachines(ShowInput(inInput), inJob, inSummary, mShared.mLevels)
						: SummarizeForPeople(inJob, inSummary));
	}
}

} // namespace SonaroCommand
