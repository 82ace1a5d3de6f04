#pragma once

#include "SonaroHost/Effects/EffectSetup.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace SonaroCommand
{

// The options of a chain of effects: --effect and --effect-file, and --set and --preset for the effect before them.
class EffectOptions
{
public:
	void AddOptions(CLI::App& ioParser);

	// The effects in the order in which they were given. Throws a HostError for a --set or --preset before any
	// effect, and for one that cannot be read.
	std::vector<SonaroHost::Effects::EffectSetup> MakeSetups() const;

private:
	CLI::App const* mParser = nullptr;
	std::vector<std::string> mEffects;
	std::vector<std::string> mFiles;
	std::vector<std::string> mSettings;
	std::vector<std::string> mPresets;
};

} // namespace SonaroCommand
