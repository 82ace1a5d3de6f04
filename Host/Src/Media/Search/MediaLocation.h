#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace SonaroHost
{

// What a timeline's URL or path may mean.
struct MediaLocation
{
	// Paths on this system to be tried in this order. Empty for a URL of the network.
	std::vector<std::filesystem::path> mPaths;
	// The scheme of a URL that is no file's: "https". Then mElsewhere is what its path would be in a folder of media.
	std::string mForeignScheme;
	std::vector<std::filesystem::path> mElsewhere;
};

MediaLocation ParseMediaLocation(std::string_view inUrl);

// Each "%" with two hexadecimal digits becomes the byte; others stay.
std::string DecodePercent(std::string_view inText);

} // namespace SonaroHost
