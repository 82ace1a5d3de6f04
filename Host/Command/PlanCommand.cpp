#include "Command.h"

#include "PlannedRender.h"
#include "Report/ReportFile.h"
#include "Report/TimelineNotes.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/NumberText.h"
#include "SonaroHost/Base/PrintableText.h"
#include "SonaroHost/Files/OutputFile.h"
#include "SonaroHost/Files/StandardStreams.h"
#include "SonaroHost/OtioSequence/TimelineInput.h"
#include "SonaroHost/Render/TimelineFarm.h"
#include "Terminal/Console.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

namespace SonaroCommand
{

using namespace SonaroHost;
using namespace SonaroHost::Otio;

namespace
{

constexpr std::size_t kMostPieces = 100000;

class PlanCommand final : public Command
{
public:
	explicit PlanCommand(CLI::App& ioProgram)
		: Command(ioProgram, "plan", "Plan the render of a timeline in pieces, for several machines"),
		  mPlanned(GetParser())
	{
		AddOwnOptions();
		mPlanned.AddOptions();
		AddFlag("--quiet", mIsQuiet, "Print only warnings and errors");
		GetParser().footer(
			"The pieces cost about the same. Each is rendered by \"sonaro render --piece\" on any machine\n"
			"that reaches the timeline and its media, and \"sonaro join\" makes of them the file that one\n"
			"\"sonaro render\" with these options would write, to the byte, and the same report. A timeline\n"
			"with effects that remember all that came before is one piece; the plan says why.\n"
			"\n"
			"Examples:\n"
			"  sonaro plan edit.otio --pieces 32 -o plan.json\n"
			"  sonaro plan edit.otio --pieces 32 -o plan.json --normalize -16 --limit-dbtp -1 --bits 24\n"
			"  sonaro plan edit.otio --pieces 8 -o plan.json --track-levels --range 01:00:10:00+600");
	}

	int Run() override
	{
		if (!IsTimelinePath(mInput))
		{
			Refuse(QuotePath(mInput) + " is no timeline; plan accepts .otio, .otioz and .otiod");
		}
		MakeRoomForOutputs({mOutput, mReport});
		TimelineRenderRequest request = MakeRequest();
		CheckCanPlan(request);
		FarmRequest farm;
		farm.mPieces = mPieces;
		farm.mHasTracks = mHasTracks;
		farm.mProgram = DescribeRenderer();
		farm.mOptions = mPlanned.ListOptions();
		TimelineRenderJob const job(request);
		WarnOfNotes(job.GetSequence().mMissing, job.GetNotes());
		CheckReport(mPlanned.GetOptions(), ReportFolder::kIsThere);
		mPlanned.GetTimeline().CheckStrictly(job, mInput);
		FarmPlan const plan = PlanFarm(job, request, farm);
		Write(ToText(plan));
		if (!mIsQuiet)
		{
			PrintResult(Describe(plan));
		}
		bool const isComplete = job.GetSequence().mMissing.empty() && plan.mMissingEffects == 0;
		return isComplete ? kExitSuccess : kExitMissing;
	}

	std::string DescribeInputs() const override { return "plan accepts timelines (.otio, .otioz, .otiod)"; }

private:
	void AddOwnOptions()
	{
		Add("INPUT", mInput, "(required)", "Timeline (.otio, .otioz, .otiod)")->required();
		Add("--pieces", mPieces, "N (required)",
			"Number of pieces, 1 to 100000; fewer where the timeline has not as many blocks")
			->required()
			->check(CLI::Range(std::size_t{1}, kMostPieces));
		Add("-o,--output", mOutput, "OUTPUT (required)",
			"Plan to write, as JSON, replaced if it exists; - is the standard output")
			->required();
		Add("--join-output", mJoinOutput, "FILE",
			"File that \"sonaro join\" is to write: its format and its place are checked now, before any "
			"piece is rendered; it is no part of the plan");
		AddFlag("--no-overwrite", mKeepsOldFile,
			"Fail if the plan, or the file of --join-output, already exists");
		Add("--report", mReport, "FILE",
			"Report to write, as JSON, or as a page if its name ends in .html, if --strict refuses the "
			"render; "
			"without that none is written");
		AddFlag("--track-levels", mHasTracks,
			"Let pieces carry what the meters of tracks hear, so that \"sonaro join\" can write a report; "
			"they "
			"grow by the tracks that are heard");
	}

	// With the file of the join, its format and place are checked together with those of the plan.
	TimelineRenderRequest MakeRequest()
	{
		mPlanned.SetReport(mReport);
		if (!mJoinOutput.empty())
		{
			mPlanned.SetOutput(mJoinOutput);
		}
		TimelineRenderRequest request =
			mPlanned.MakeRequest(mInput, mJoinOutput.empty() ? mOutput : mJoinOutput);
		if (!mJoinOutput.empty())
		{
			request.mOtherOutputs.emplace_back(mOutput);
		}
		request.mReplace = !mKeepsOldFile;
		return request;
	}

	void Write(std::string const& inText) const
	{
		OutputFile file(mOutput);
		file.Write(inText.data(), static_cast<std::int64_t>(inText.size()));
		file.Commit(!mKeepsOldFile);
	}

	std::string Describe(FarmPlan const& inPlan) const
	{
		auto const compare = [](FarmPiece const& inA, FarmPiece const& inB)
		{ return inA.mRange.mFrames < inB.mRange.mFrames; };
		auto const [shortest, longest] =
			std::minmax_element(inPlan.mPieces.begin(), inPlan.mPieces.end(), compare);
		int const rate = inPlan.mSampleRate;
		std::string text = MakePrintable(ShowOutput(mOutput)) + ": " +
						   FormatCount(inPlan.mPieces.size(), "piece") + " of " +
						   FormatTime(inPlan.mRange.mFrames, rate);
		if (inPlan.mPieces.size() > 1)
		{
			text += ", each of " + FormatTime(shortest->mRange.mFrames, rate) + " to " +
					FormatTime(longest->mRange.mFrames, rate);
		}
		return text + "\n" + (inPlan.mWhyWhole.empty() ? "" : "in one piece: " + inPlan.mWhyWhole + "\n");
	}

	std::string mInput;
	std::size_t mPieces = 1;
	std::string mOutput;
	std::string mJoinOutput;
	std::string mReport;
	bool mKeepsOldFile = false;
	bool mHasTracks = false;
	bool mIsQuiet = false;
	PlannedRender mPlanned;
};

} // namespace

std::unique_ptr<Command> MakePlanCommand(CLI::App& ioProgram)
{
	return std::make_unique<PlanCommand>(ioProgram);
}

} // namespace SonaroCommand
