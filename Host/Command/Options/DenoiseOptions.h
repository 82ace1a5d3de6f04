#pragma once

#include "SonaroHost/Render/ClipRenderRequest.h"

#include <CLI/CLI.hpp>

#include <optional>
#include <string>

namespace SonaroCommand
{

// The options of the reduction of noise: --denoise, --reduction and --learn.
class DenoiseOptions
{
public:
	void AddOptions(CLI::App& ioParser);

	// Nothing without --denoise. Throws a HostError for a range that cannot be read.
	std::optional<SonaroHost::NoiseReduction> MakeReduction() const;

private:
	bool mDenoises = false;
	std::optional<double> mReduction;
	std::string mLearn;
};

} // namespace SonaroCommand
