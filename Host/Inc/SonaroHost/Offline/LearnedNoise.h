#pragma once

#include "SonaroHost/Offline/Denoise.h"

#include <filesystem>
#include <optional>

namespace SonaroHost
{

// What was learned of the noise of a file, for people.
struct LearnedNoise
{
	// What people call it.
	std::filesystem::path mPath;
	int mSampleRate = 0;
	Denoise mDenoise;
	// The root mean square of the noise in the channel that has most of it, 1 being full scale. Nothing where the file is
	// silent or too short: then it stays as it is.
	std::optional<double> mLevel;
};

} // namespace SonaroHost
