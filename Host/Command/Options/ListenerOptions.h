#pragma once

#include "SonaroHost/Binaural/Listener.h"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace SonaroCommand
{

// The options of sound for two ears: --binaural, and --listener, --yaw, --head-pitch and --roll, which say whose they are
// and where they are turned.
class ListenerOptions
{
public:
	void AddOptions(CLI::App& ioParser);

	// Nothing without --binaural. Throws a HostError for the other options without it, and for ears that cannot be read.
	std::optional<SonaroHost::Listener> MakeListener() const;
	// What outputs must not replace: the inputs, and the file of the ears.
	std::vector<std::filesystem::path> AddFile(std::vector<std::filesystem::path> inInputs) const;

private:
	bool mIsBinaural = false;
	std::string mEars;
	std::optional<float> mYaw;
	std::optional<float> mPitch;
	std::optional<float> mRoll;
};

} // namespace SonaroCommand
