#include "TimelineRender.h"

#include "Command.h"
#include "Console.h"
#include "RenderReport.h"
#include "RunJob.h"
#include "SonaroHost/HostError.h"
#include "SonaroHost/OutputFile.h"
#include "SonaroHost/StandardStreams.h"
#include "TimelineNotes.h"
#include "TimelineOptions.h"
#include "TimelineRenderReport.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace SonaroCommand
{

namespace
{

using namespace SonaroHost;
using namespace SonaroHost::Otio;

[[noreturn]] void Refuse(std::string const& inMessage)
{
	throw HostError(HostError::Kind::eRequest, inMessage);
}

} // namespace

TimelineRender::TimelineRender(CLI::App& ioParser, RenderOptions const& inShared)
	: mParser(ioParser),
	  mShared(inShared)
{
}

void TimelineRender::AddOptions()
{
	mParser
		.add_option("--range", mRange,
			"The part of a timeline to render: START..END or START+DURATION, in times or timecode, or a "
			"marker's name")
		->option_text("RANGE");
	mParser
		.add_option("--stems", mStems,
			"Write a timeline's track or marker each into a file of its own, in the folder OUTPUT")
		->option_text("WHAT")
		->check(CLI::IsMember({"track", "marker"}));
	mParser
		.add_option("--normalize", mNormalizeLoudness, "The loudness that a timeline's mix gets, such as -16")
		->option_text("LUFS");
	mParser
		.add_option("--limit-dbtp", mLimitDecibels,
			"The highest true peak of a timeline's output, such as -1 (default: no limit)")
		->option_text("DB");
	AddTimelineOptions(mParser, mMediaFolders, mFades);
	mParser.add_flag("--strict", mIsStrict,
		"Write nothing and end with 1 when media of a timeline are missing or something in it was guessed or "
		"ignored; without it the program ends with 3 when media are missing");
	mParser
		.add_option(
			"--report", mReport, "Write what became of a timeline's parts as JSON; - is the standard output")
		->option_text("FILE");
}

bool TimelineRender::IsMeant(std::vector<std::string> const& inInputs) const
{
	auto const found = std::find_if(
		inInputs.begin(), inInputs.end(), [](std::string const& inInput) { return IsTimelinePath(inInput); });
	if (found != inInputs.end() && inInputs.size() > 1)
	{
		Refuse(QuotePath(*found) + " is a timeline, which is rendered by itself; give no other inputs");
	}
	return found != inInputs.end();
}

int TimelineRender::Run(std::string const& inInput)
{
	MakeRoomForOutputs({mShared.mOutput, mReport});
	TimelineRenderJob job(MakeRequest(inInput));
	WarnOfNotes(job.GetSequence().mMissing, job.GetNotes());
	CheckStrictly(job);
	CheckReport();
	auto const summary = RunJob(job, job.GetSampleRate(), mShared.mIsQuiet);
	WarnOfLevels(summary);
	Report(job, inInput, summary);
	return job.GetSequence().mMissing.empty() ? kExitSuccess : kExitMissing;
}

TimelineRenderRequest TimelineRender::MakeRequest(std::string const& inInput) const
{
	TimelineRenderRequest request;
	request.mInput = inInput;
	request.mMediaFolders.assign(mMediaFolders.begin(), mMediaFolders.end());
	request.mOutput = mShared.mOutput;
	if (!mReport.empty())
	{
		request.mOtherOutputs.emplace_back(mReport);
	}
	if (!mStems.empty() && IsStandardStream(mShared.mOutput))
	{
		Refuse("--stems: stems are files of their own; give a folder as the output");
	}
	request.mStems = mStems.empty() ? Stems::eNone : mStems == "track" ? Stems::eTracks : Stems::eMarkers;
	// A folder's name ends in nothing.
	bool const isFolder = request.mStems != Stems::eNone && mShared.mFormat.empty();
	request.mContainer = isFolder ? OutputContainer::eWav : mShared.ChooseContainer();
	request.mSamples = mShared.GetSamples();
	request.mDither = mShared.GetDither();
	request.mSampleRate = mShared.mSampleRate;
	request.mLayout = mShared.ParseLayout();
	request.mFadeShape = ParseFades(mFades);
	request.mRange = mRange;
	request.mLevels.mNormalizeLoudness = mNormalizeLoudness;
	request.mLevels.mLimitDecibels = mLimitDecibels;
	request.mMeasuring = !mReport.empty()                       ? Measuring::eTracks
						 : mShared.mAsJson || !mShared.mIsQuiet ? Measuring::eOutput
																: Measuring::eNothing;
	request.mReplace = !mShared.mKeepsOldFile;
	request.mBlockFrames = mShared.mBlockFrames.value_or(request.mBlockFrames);
	return request;
}

void TimelineRender::CheckStrictly(TimelineRenderJob const& inJob) const
{
	std::size_t const missing = inJob.GetSequence().mMissing.size();
	if (mIsStrict && (missing > 0 || HasGuesses(inJob.GetNotes())))
	{
		throw HostError(
			HostError::Kind::eInput, "nothing was written, since --strict was given and " +
										 (missing > 0 ? std::to_string(missing) + " clips have no media"
													  : std::string("something was guessed or ignored")));
	}
}

void TimelineRender::CheckReport() const
{
	std::filesystem::path const folder = std::filesystem::path(mReport).parent_path();
	// That of stems may be missing so far.
	if (!mReport.empty() && (folder.empty() || std::filesystem::is_directory(folder)))
	{
		OutputFile const file(mReport);
	}
}

void TimelineRender::WarnOfLevels(TimelineRenderSummary const& inSummary) const
{
	for (RenderedFile const& file : inSummary.mFiles)
	{
		if (file.mClippedSamples > 0)
		{
			PrintWarning(std::to_string(file.mClippedSamples) + " samples of " + QuotePath(file.mPath) +
						 " were clipped at full scale (peak " + FormatPeak(file.mPeak) +
						 "); give --limit-dbtp -1, or write floats with --bits 32f");
		}
	}
	constexpr double kTolerance = 0.1;
	if (std::fabs(inSummary.mLoudnessError) > kTolerance)
	{
		std::array<char, 96> text{};
		std::snprintf(text.data(), text.size(), "with the limiter the loudness stays %.1f LU %s --normalize",
			std::fabs(inSummary.mLoudnessError), inSummary.mLoudnessError < 0.0 ? "below" : "above");
		PrintWarning(text.data());
	}
}

void TimelineRender::Report(
	TimelineRenderJob const& inJob, std::string const& inInput, TimelineRenderSummary const& inSummary) const
{
	if (!mReport.empty())
	{
		std::string const text = ReportForMachines(inInput, inJob, inSummary, mNormalizeLoudness);
		OutputFile file(mReport);
		file.Write(text.data(), static_cast<std::int64_t>(text.size()));
		file.Commit();
	}
	if (mShared.mAsJson)
	{
		PrintResult(SummarizeForMachines(inInput, inJob, inSummary, mNormalizeLoudness));
	}
	else if (!mShared.mIsQuiet)
	{
		PrintResult(SummarizeForPeople(inJob, inSummary));
	}
}

} // namespace SonaroCommand
