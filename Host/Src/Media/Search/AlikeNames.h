#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace SonaroHost
{

// Finds files whose names are the wanted ones but for the case of letters and for how Unicode writes them: "é" is one
// character or an "e" with an accent, and file systems differ in which they keep. Each folder is listed once.
// Threads: one at a time.
class AlikeNames
{
public:
	// The file at inTail below inFolder, where only parts that are not there as they stand may be alike. Where
	// several are alike, one that differs in the Unicode form alone goes first, then the first in the order of bytes.
	std::optional<std::filesystem::path> Find(
		std::filesystem::path const& inFolder, std::filesystem::path const& inTail);

private:
	// What is alike, and the names.
	using Names = std::unordered_map<std::string, std::vector<std::string>>;

	Names const& List(std::filesystem::path const& inFolder);

	std::unordered_map<std::string, Names> mFolders;
};

} // namespace SonaroHost
