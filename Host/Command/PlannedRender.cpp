#include "PlannedRender.h"

#include "Command.h"
#include "Options/SharedOptions.h"
#include "Report/Json.h"
#include "Report/ReportFile.h"
#include "Report/StrictRender.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Media/MovieLibraries.h"
#include "SonaroHost/Render/TimelineFarm.h"
#include "Terminal/Console.h"

#include <algorithm>
#include <charconv>
#include <set>
#include <system_error>
#include <utility>

namespace SonaroCommand
{

using namespace SonaroHost;
using namespace SonaroHost::Otio;

namespace
{

// Options of commands that are no part of a plan.
bool IsPlanned(CLI::Option const& inOption)
{
	static std::set<std::string> const sOthers{"--help", "--output", "--join-output", "--pieces",
		"--track-levels", "--report", "--no-overwrite", "--quiet", "--json"};
	return inOption.nonpositional() && inOption.count() > 0 && !sOthers.contains(inOption.get_name());
}

bool NamesFile(std::string const& inOption)
{
	return inOption == "--media" || inOption == "--listener";
}

// Of a folder of media: that of the machine that planned need not be on this one.
bool IsThere(std::string const& inFolder, bool inWarns)
{
	std::error_code error;
	bool const isThere = std::filesystem::is_directory(inFolder, error);
	if (!isThere && inWarns)
	{
		PrintWarning("the plan's media folder " + QuotePath(inFolder) +
					 " is not there and is not searched; give another one with --media if media are missing");
	}
	return isThere;
}

// "plan.json#17" in its parts.
std::pair<std::string, std::size_t> SplitPiece(std::string const& inPiece)
{
	std::size_t const mark = inPiece.rfind('#');
	std::size_t number = 0;
	char const* const end = inPiece.data() + inPiece.size();
	char const* const digits = mark == std::string::npos ? end : inPiece.data() + mark + 1;
	auto const [rest, error] = std::from_chars(digits, end, number);
	if (mark == 0 || digits == end || rest != end || error != std::errc())
	{
		Refuse("--piece: " + QuotePath(inPiece) +
			   " does not name a piece; give the plan and a number from 1 on, like plan.json#17");
	}
	return {inPiece.substr(0, mark), number};
}

std::string DescribePiece(std::string const& inOutput, FarmPlan const& inPlan, std::size_t inNumber,
	PieceSummary const& inSummary, bool inAsJson)
{
	if (inAsJson)
	{
		return ToText(
			Json{{"schema", "sonaro.piece-render"}, {"version", 1}, {"output", inOutput}, {"piece", inNumber},
				{"pieces", inPlan.mPieces.size()}, {"firstSample", inSummary.mRange.mFirstFrame},
				{"samples", inSummary.mRange.mFrames}, {"elapsedSeconds", inSummary.mElapsedSeconds}});
	}
	int const rate = inPlan.mSampleRate;
	return MakePrintable(ShowOutput(inOutput)) + ": piece " + std::to_string(inNumber) + " of " +
		   std::to_string(inPlan.mPieces.size()) + ", " + FormatTime(inSummary.mRange.mFrames, rate) +
		   " from " + FormatTime(inSummary.mRange.mFirstFrame, rate) + " on\n";
}

} // namespace

PlannedRender::PlannedRender(CLI::App& ioParser)
	: mParser(ioParser),
	  mTimeline(ioParser, mOptions)
{
	// The pieces of a plan are the same whatever the file is called in the end.
	mOptions.mOutput = "planned.wav";
}

void PlannedRender::AddOptions()
{
	mTimeline.AddOptions();
	mParser.get_option("--stems")->group("");
	mOptions.AddFormat(mParser);
	mOptions.AddBlock(mParser);
	mOptions.mStretch.AddForAll(mParser);
	mOptions.AddRate(mParser);
	mOptions.AddLevels(mParser);
	mOptions.AddLayout(mParser);
	mOptions.mListener.AddOptions(mParser);
	mOptions.AddTail(mParser);
	mOptions.AddStrict(mParser);
}

FarmPlan::Options PlannedRender::ListOptions() const
{
	FarmPlan::Options options;
	for (CLI::Option const* const option : mParser.get_options())
	{
		if (!IsPlanned(*option))
		{
			continue;
		}
		std::vector<std::string> values = option->results();
		for (std::string& value : values)
		{
			value = NamesFile(option->get_name()) ? std::filesystem::absolute(value).string() : value;
		}
		options.emplace_back(option->get_name(), std::move(values));
	}
	return options;
}

TimelineRenderRequest PlannedRender::MakeRequest(
	std::string const& inInput, std::filesystem::path const& inOutput) const
{
	TimelineRenderRequest request = mTimeline.MakeRequest(inInput);
	request.mOutput = inOutput;
	return request;
}

// Values are joined to their options, as some begin with a dash.
std::vector<std::string> ListArguments(FarmPlan const& inPlan, std::vector<std::string> const& inMediaFolders)
{
	std::vector<std::string> arguments;
	for (auto const& [name, values] : inPlan.mOptions)
	{
		for (std::string const& value : values)
		{
			if (name != "--media" || IsThere(value, inMediaFolders.empty()))
			{
				arguments.push_back(std::string(name).append("=").append(value));
			}
		}
	}
	return arguments;
}

std::string FindTimeline(FarmPlan const& inPlan, std::filesystem::path const& inPlanPath)
{
	std::error_code error;
	std::filesystem::path const& place = inPlan.mTimeline.mPath;
	std::filesystem::path const beside = inPlanPath.parent_path() / place.filename();
	if (!std::filesystem::exists(place, error) && std::filesystem::exists(beside, error))
	{
		return beside.string();
	}
	bool const isAsGiven = std::filesystem::absolute(inPlan.mInput, error) == place;
	return isAsGiven ? inPlan.mInput : place.string();
}

std::string DescribeRenderer()
{
	std::string const libraries = DescribeMovieLibraries();
	return std::string("sonaro " SONARO_VERSION) +
		   (libraries.empty() ? " without movies" : " with " + libraries);
}

int RenderPiece(
	std::string const& inPiece, RenderOptions const& inShared, std::vector<std::string> const& inMediaFolders)
{
	auto const [path, number] = SplitPiece(inPiece);
	FarmPlan const plan = ReadFarmPlan(path);
	CLI::App parser;
	PlannedRender planned(parser);
	planned.AddOptions();
	std::vector<std::string> arguments = ListArguments(plan, inMediaFolders);
	std::ranges::reverse(arguments);
	try
	{
		parser.parse(std::move(arguments));
	}
	catch (CLI::ParseError const& error)
	{
		RefuseFile(path, "has options that this program does not know: " + std::string(error.what()),
			"take the plan as sonaro plan wrote it");
	}
	planned.SetReport(inShared.mReport);
	planned.SetQuiet(inShared.mIsQuiet);
	std::string const input = FindTimeline(plan, path);
	TimelineRenderRequest request = planned.MakeRequest(input, inShared.mOutput);
	request.mMediaFolders.insert(request.mMediaFolders.begin(), inMediaFolders.begin(), inMediaFolders.end());
	request.mJobs = inShared.mJobs.value_or(1);
	request.mReplace = !inShared.mKeepsOldFile;
	request.mOtherOutputs.clear();
	if (!inShared.mReport.empty())
	{
		request.mOtherOutputs.emplace_back(inShared.mReport);
	}
	request.mOtherInputs = {path};
	TimelinePieceJob job(std::move(request), plan, number, DescribeRenderer());
	CheckReport(inShared, ReportFolder::kIsThere);
	PieceSummary const summary = RunStrictly(job, planned.GetOptions(),
		[&](std::string const& inReason)
		{ planned.GetTimeline().WriteRefusal(job.GetJob(), input, inReason); });
	if (inShared.mAsJson || !inShared.mIsQuiet)
	{
		PrintResult(DescribePiece(inShared.mOutput, plan, number, summary, inShared.mAsJson));
	}
	return kExitSuccess;
}

} // namespace SonaroCommand
