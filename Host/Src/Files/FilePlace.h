#pragma once

#include "SystemFiles.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <vector>

namespace SonaroHost
{

// Follows links to what they point at in the end, also where nothing is there yet. Where links lead in a circle, the
// path itself.
std::filesystem::path FollowLinks(std::filesystem::path const& inPath);

// Which file or folder a path means, whatever its text: one that is there by its number, which is the same through
// links of both kinds; one that could be there by the nearest folder above it that is, and the names below that.
// A path that cannot be reached is like one of nothing.
//
// Case     Names of what is not there differ in case alone only where that folder distinguishes "a" from "A". What it
//          holds shows that; an empty one counts as distinguishing them.
// Threads  Any. It is the state at the time when it was made.
class FilePlace
{
public:
	explicit FilePlace(std::filesystem::path const& inPath);

	bool IsThere() const { return mNames.empty(); }
	bool IsSame(FilePlace const& inOther) const;
	// Whether neither is there, and their names differ at most in the case of letters and in the form of Unicode.
	bool IsAlike(FilePlace const& inOther) const;
	// Whether it is in the folder, at any depth.
	bool IsWithin(FilePlace const& inFolder) const;

private:
	// Finds mPath and mNumber, and gives the names below.
	std::filesystem::path Resolve(std::filesystem::path const& inPath);
	// Whether both have the same folder and the same first names, or such as are alike.
	bool HasSameStart(FilePlace const& inOther, std::size_t inNames) const;
	bool HasAlikeStart(FilePlace const& inOther, std::size_t inNames) const;

	// What is there of the path, with links followed, and its number.
	std::filesystem::path mPath;
	std::optional<FileNumber> mNumber;
	// Names below mPath.
	std::vector<std::filesystem::path> mNames;
};

} // namespace SonaroHost
