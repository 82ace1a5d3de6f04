#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace SonaroCommand
{

// What a timeline is: tracks, clips, media, markers, what is missing.
std::string DescribeTimelineForPeople(
	std::string const& inInput, std::vector<std::filesystem::path> const& inMediaFolders);
std::string DescribeTimelineForMachines(
	std::string const& inInput, std::vector<std::filesystem::path> const& inMediaFolders);

} // namespace SonaroCommand
