#include "Command.h"

#include "PlannedRender.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Render/OutputRequest.h"
#include "SonaroHost/Render/TimelineFarm.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace SonaroCommand
{

using namespace SonaroHost;

namespace
{

class JoinCommand final : public Command
{
public:
	explicit JoinCommand(CLI::App& ioProgram)
		: Command(ioProgram, "join", "Join the rendered pieces of a plan")
	{
		Add("PLAN", mPlan, "(required)", "Plan that \"sonaro plan\" wrote")->required();
		Add("-o,--output", mOutput, "OUTPUT (required)",
			"Output file, replaced if it exists and written only if the command succeeds; - is the standard "
			"output")
			->required();
		Add("--pieces-in", mPieces, "PATH ...",
			"Folders with the rendered pieces, or their files (default: the folder of PLAN)");
		Add("--media", mMediaFolders, "DIR ...",
			"Folder to search for media that are not found at their own paths; can be given more than once")
			->allow_extra_args(false);
		Add("--jobs", mJobs, "N",
			"Number of threads, 1 to 256; the output and the report are the same for any number (default: "
			"one for each core that the process may use)")
			->check(CLI::Range(1u, kMostJobs));
		Add("--report", mReport, "FILE",
			"Write the report that \"sonaro render\" writes; the plan needs --track-levels");
		AddFlag("--no-overwrite", mKeepsOldFile, "Fail if an output file already exists");
		AddFlag("--quiet", mIsQuiet, "Print only warnings and errors");
		AddFlag("--json", mAsJson, "Print the summary as JSON");
		GetParser().footer(
			"The output has the bytes of the file that one \"sonaro render\" with the options of the plan\n"
			"would write, and the report and the summary are the same but for the time that it took. The\n"
			"timeline and its media have to be within reach, and as they were when the render was planned.\n"
			"\n"
			"Examples:\n"
			"  sonaro join plan.json -o mix.wav\n"
			"  sonaro join plan.json -o mix.wav --pieces-in pieces --report mix.json");
	}

	int Run() override
	{
		auto joined = std::make_shared<JoinedPlan>();
		joined->mPlan = ReadFarmPlan(mPlan);
		joined->mProgram = DescribeRenderer();
		if (!mReport.empty() && !joined->mPlan.mHasTracks)
		{
			Refuse("--report: the pieces of " + QuotePath(mPlan) +
				   " do not carry the levels of tracks; plan with --track-levels, or leave the report out");
		}
		joined->mPieces = Otio::OpenPieces(joined->mPlan, ListPlacesOfPieces());
		joined->mFiles = Otio::ListPieceFiles(*joined->mPieces);
		joined->mFiles.emplace_back(mPlan);
		std::vector<std::string> arguments = ListRenderArguments(joined->mPlan);
		CLI::App program;
		auto const render = MakeJoiningCommand(program, std::move(joined));
		std::ranges::reverse(arguments);
		try
		{
			program.parse(std::move(arguments));
		}
		catch (CLI::ParseError const& error)
		{
			RefuseFile(mPlan, "has options that this program does not know: " + std::string(error.what()),
				"take the plan as sonaro plan wrote it");
		}
		return render->Run();
	}

	std::string DescribeInputs() const override { return "join accepts plans of sonaro plan"; }

private:
	std::vector<std::filesystem::path> ListPlacesOfPieces() const
	{
		std::vector<std::filesystem::path> paths(mPieces.begin(), mPieces.end());
		for (std::filesystem::path const& path : paths)
		{
			std::error_code error;
			if (!std::filesystem::exists(path, error))
			{
				Refuse("--pieces-in: " + QuotePath(path) +
					   " does not exist; give folders with pieces, or their files");
			}
		}
		if (paths.empty())
		{
			std::filesystem::path const folder = std::filesystem::path(mPlan).parent_path();
			paths.push_back(folder.empty() ? std::filesystem::path(".") : folder);
		}
		return paths;
	}

	// Those of the render that would write the same.
	std::vector<std::string> ListRenderArguments(FarmPlan const& inPlan) const
	{
		std::vector<std::string> arguments{"render", FindTimeline(inPlan, mPlan), "--output=" + mOutput};
		auto const add = [&](char const* inName, std::string const& inValue)
		{ arguments.push_back(std::string(inName) + "=" + inValue); };
		for (std::string const& media : mMediaFolders)
		{
			add("--media", media);
		}
		std::ranges::copy(ListArguments(inPlan, mMediaFolders), std::back_inserter(arguments));
		if (mJobs)
		{
			add("--jobs", std::to_string(*mJobs));
		}
		if (!mReport.empty())
		{
			add("--report", mReport);
		}
		for (auto const& [name, isGiven] : {std::pair("--no-overwrite", mKeepsOldFile),
				 std::pair("--quiet", mIsQuiet), std::pair("--json", mAsJson)})
		{
			if (isGiven)
			{
				arguments.emplace_back(name);
			}
		}
		return arguments;
	}

	std::string mPlan;
	std::string mOutput;
	std::vector<std::string> mPieces;
	std::vector<std::string> mMediaFolders;
	std::optional<unsigned> mJobs;
	std::string mReport;
	bool mKeepsOldFile = false;
	bool mIsQuiet = false;
	bool mAsJson = false;
};

} // namespace

std::unique_ptr<Command> MakeJoinCommand(CLI::App& ioProgram)
{
	return std::make_unique<JoinCommand>(ioProgram);
}

} // namespace SonaroCommand
