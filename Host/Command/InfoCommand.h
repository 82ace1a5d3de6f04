#pragma once

#include "Command.h"

#include <string>
#include <vector>

namespace SonaroCommand
{

// "sonaro info INPUT": what a sound file or a timeline is.
class InfoCommand final : public Command
{
public:
	explicit InfoCommand(CLI::App& ioProgram);

	int Run() override;
	std::string DescribeInputs() const override;

private:
	std::string mInput;
	std::vector<std::string> mMediaFolders;
	unsigned mStream = 0;
	bool mAsJson = false;
};

} // namespace SonaroCommand
