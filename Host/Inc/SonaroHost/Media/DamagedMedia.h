#pragma once

#include "SonaroHost/Media/MediaDamage.h"

#include <filesystem>
#include <string>
#include <vector>

namespace SonaroHost
{

// A file of which parts could not be decoded; silence stands in their place.
struct DamagedMedia
{
	// What people call it.
	std::filesystem::path mPath;
	int mSampleRate = 0;
	std::vector<MediaDamage::Stretch> mStretches;
};

// "is damaged: silence from 0:01.000 to 0:01.021"; the first stretches of many.
std::string DescribeDamage(DamagedMedia const& inMedia);

} // namespace SonaroHost
