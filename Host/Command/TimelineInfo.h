#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace SonaroCommand
{

// Says what a timeline is, for people or as JSON: tracks, clips, media, markers, what is missing. One that cannot be
// rendered is described all the same, with the reason. Gives the program's exit code.
int TellOfTimeline(
	std::string const& inInput, std::vector<std::filesystem::path> const& inMediaFolders, bool inAsJson);

} // namespace SonaroCommand
