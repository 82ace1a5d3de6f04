#pragma once

#include "Command.h"
#include "Report/LoudnessRows.h"
#include "SonaroHost/Render/OutputRequest.h"

#include <string>
#include <vector>

namespace SonaroCommand
{

// "sonaro loudness INPUT ...": how loud sound files, movies and timelines are.
class LoudnessCommand final : public Command
{
public:
	explicit LoudnessCommand(CLI::App& ioProgram);

	int Run() override;
	std::string DescribeInputs() const override;

private:
	// Throws a HostError for options that the inputs have no use for.
	void CheckOptions();
	void FillRequest(SonaroHost::OutputRequest& outRequest) const;
	// These throw a HostError for an input that cannot be read.
	MeasuredProgramme Measure(std::string const& inInput);
	MeasuredProgramme MeasureFile(std::string const& inInput) const;
	MeasuredProgramme MeasureTimeline(std::string const& inInput);
	std::vector<MeasuredProgramme> MeasureAll();
	void WritePlot(std::vector<MeasuredProgramme> const& inProgrammes) const;

	std::vector<std::string> mInputs;
	std::string mOutput;
	std::string mStart;
	std::string mDuration;
	unsigned mStream = 0;
	std::string mRange;
	std::vector<std::string> mMediaFolders;
	std::string mFades;
	bool mKeepsOldFile = false;
	bool mIsQuiet = false;
	bool mAsJson = false;
	int mExitCode = kExitSuccess;
};

} // namespace SonaroCommand
