#pragma once

#include "SonaroHost/Binaural/Listener.h"

#include <CLI/CLI.hpp>

#include <optional>
#include <string>

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

private:
	bool mIsBinaural = false;
	std::string mEars;
	std::optional<float> mYaw;
	std::optional<float> mPitch;
	std::optional<float> mRoll;
};

} // namespace SonaroCommand
