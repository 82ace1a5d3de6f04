#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace SonaroHost::Otio
{

// What became of the search for a clip's media.
struct FoundMedia
{
	bool IsFound() const { return mWhyMissing.empty(); }

	// The file; where there is none, the place where it was looked for first, or as the timeline names it.
	std::filesystem::path mPath;
	// For people, such as "does not exist"; empty when the file was found.
	std::string mWhyMissing;
	// Where the timeline's own place is empty and the file was taken from elsewhere; otherwise empty.
	std::string mRemark;
	// The places that were empty. A file there would be taken the next time.
	std::vector<std::filesystem::path> mLookedFor = {};
};

// Finds the files that a timeline's URLs and paths stand for.
//
// Named   "file:" URLs, percent-encoded, with or without "localhost"; relative URLs; plain paths, those with
//         drive letters and backslashes too. A path that is there as it stands is never decoded.
// Order   The place itself, relative ones from the timeline's folder on; then in each media folder the path
//         as it stands and its ever shorter ends, down to the name of the file.
// Threads Any; it never changes.
class MediaFinder
{
public:
	// inFolder: of the timeline.
	explicit MediaFinder(
		std::filesystem::path inFolder, std::vector<std::filesystem::path> inMediaFolders = {});

	FoundMedia Find(std::string_view inUrl) const;

private:
	std::filesystem::path mFolder;
	std::vector<std::filesystem::path> mMediaFolders;
};

} // namespace SonaroHost::Otio
