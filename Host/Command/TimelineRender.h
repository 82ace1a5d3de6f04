#pragma once

#include "Options/RenderOptions.h"
#include "SonaroHost/Render/TimelineRenderJob.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace SonaroCommand
{

// What "sonaro render" does with a timeline.
class TimelineRender
{
public:
	// inShared: the options of the command that mean the same for sound files.
	TimelineRender(CLI::App& ioParser, RenderOptions const& inShared);

	void AddOptions();

	// Whether the inputs are one timeline. Throws a HostError when there are others beside it.
	bool IsMeant(std::vector<std::string> const& inInputs) const;

	// Gives the program's exit code.
	int Run(std::string const& inInput);

	SonaroHost::Otio::TimelineRenderRequest MakeRequest(std::string const& inInput) const;
	// Throws a HostError when --strict forbids the render, after writing its report.
	void CheckStrictly(SonaroHost::Otio::TimelineRenderJob const& inJob, std::string const& inInput) const;
	// The report and the summary for machines, where they are asked for.
	void WriteRefusal(SonaroHost::Otio::TimelineRenderJob const& inJob, std::string const& inInput,
		std::string const& inReason) const;
	// Those of --media.
	std::vector<std::string> const& GetMediaFolders() const { return mMediaFolders; }

private:
	// What reports call it.
	std::string const& ShowInput(std::string const& inInput) const;
	// What --report writes. inRefusal: why the render is refused; empty for one that is not.
	std::string DescribeReport(SonaroHost::Otio::TimelineRenderJob const& inJob, std::string const& inInput,
		SonaroHost::RenderSummary const& inSummary, std::string const& inRefusal) const;
	void Report(SonaroHost::Otio::TimelineRenderJob const& inJob, std::string const& inInput,
		SonaroHost::RenderSummary const& inSummary) const;

	CLI::App& mParser;
	RenderOptions const& mShared;
	std::string mRange;
	std::string mStems;
	std::vector<std::string> mMediaFolders;
	std::string mFades;
};

} // namespace SonaroCommand
