#pragma once

#include "Command.h"

#include <string>

namespace SonaroCommand
{

// "sonaro info INPUT": what a sound file is.
class InfoCommand final : public Command
{
public:
	explicit InfoCommand(CLI::App& ioProgram);

	int Run() override;

private:
	std::string mInput;
	bool mAsJson = false;
};

} // namespace SonaroCommand
