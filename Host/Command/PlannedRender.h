#pragma once

#include "Options/RenderOptions.h"
#include "SonaroHost/Render/FarmPlan.h"
#include "SonaroHost/Render/TimelineRenderRequest.h"
#include "TimelineRender.h"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <string>
#include <vector>

namespace SonaroCommand
{

// The options of a timeline's render that a plan holds.
class PlannedRender
{
public:
	explicit PlannedRender(CLI::App& ioParser);
	PlannedRender(PlannedRender const&) = delete;
	PlannedRender& operator=(PlannedRender const&) = delete;

	void AddOptions();
	// Those that were given, with files and folders that processes in other folders find.
	SonaroHost::FarmPlan::Options ListOptions() const;
	// Of what renders with them into a file. Throws a HostError.
	SonaroHost::Otio::TimelineRenderRequest MakeRequest(
		std::string const& inInput, std::filesystem::path const& inOutput) const;
	// Lets requests be those of what is joined into that file.
	void SetOutput(std::string const& inOutput) { mOptions.mOutput = inOutput; }
	// Where a refusal by --strict is reported; empty for nowhere.
	void SetReport(std::string const& inReport) { mOptions.mReport = inReport; }
	void SetQuiet(bool inIsQuiet) { mOptions.mIsQuiet = inIsQuiet; }
	RenderOptions const& GetOptions() const { return mOptions; }
	TimelineRender const& GetTimeline() const { return mTimeline; }

private:
	CLI::App& mParser;
	RenderOptions mOptions;
	TimelineRender mTimeline;
};

// Options of a plan as arguments of a command, without media folders that are not there: of these it warns where the
// command was given none itself, by inMediaFolders.
std::vector<std::string> ListArguments(
	SonaroHost::FarmPlan const& inPlan, std::vector<std::string> const& inMediaFolders);

// Where a plan's timeline lies: as it was given, where that is the same file here, or at its place, or beside the plan.
std::string FindTimeline(SonaroHost::FarmPlan const& inPlan, std::filesystem::path const& inPlanPath);

// The program with all that decides the bits that it renders.
std::string DescribeRenderer();

// What "sonaro render --piece" does, with "plan.json#17". inShared: the output, and how many threads. inMediaFolders: those
// that are searched before the plan's. Gives the program's exit code. Throws a HostError.
int RenderPiece(std::string const& inPiece, RenderOptions const& inShared,
	std::vector<std::string> const& inMediaFolders);

} // namespace SonaroCommand
