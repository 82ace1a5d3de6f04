#pragma once

#include "Command.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace SonaroCommand
{

// "sonaro graph INPUT -o OUTPUT": draws the engine's graph of a timeline.
class GraphCommand final : public Command
{
public:
	explicit GraphCommand(CLI::App& ioProgram);

	int Run() override;
	std::string DescribeInputs() const override;

private:
	std::string mInput;
	std::string mOutput;
	std::string mFormat;
	std::string mLayout;
	std::optional<int> mSampleRate;
	std::optional<std::size_t> mDepth;
	std::string mTrack;
	std::vector<std::string> mMediaFolders;
	std::string mFades;
	bool mShowsAll = false;
	bool mKeepsOldFile = false;
	bool mIsQuiet = false;
};

} // namespace SonaroCommand
