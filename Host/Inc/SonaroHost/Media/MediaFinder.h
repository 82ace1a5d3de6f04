#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace SonaroHost
{

class AlikeNames;

// What became of the search for a clip's media.
struct FoundMedia
{
	bool IsFound() const { return mWhyMissing.empty(); }

	// The file; where there is none, the place where it was looked for first, or as the timeline names it.
	std::filesystem::path mPath;
	// The reason for people, such as "does not exist"; empty when the file was found.
	std::string mWhyMissing;
	// Where the timeline's own place is empty and the file was taken from elsewhere; otherwise empty.
	std::string mRemark;
	// Whether the remark is a guess: another file may have been meant.
	bool mIsGuess = false;
	// mPath for people: what was unpacked from a bundle lies in the bundle.
	std::filesystem::path mShownPath;
	// The places that were empty. A file there would be taken the next time.
	std::vector<std::filesystem::path> mLookedFor = {};
};

// Finds the files that a timeline's URLs and paths stand for.
//
// Named   "file:" URLs, percent-encoded, with or without "localhost"; relative URLs; plain paths, those with
//         drive letters and backslashes too. A path that is there as it stands is never decoded.
// Order   The place itself, relative ones from the timeline's folder on; then in each media folder the path
//         as it stands and its ever shorter ends, down to the name of the file; then the same places again for
//         a name that differs in the case of letters or in the form of Unicode alone, which is a guess.
//         Addresses of other schemes, as "s3://bucket/sound/a.wav", are looked for in the media folders.
// Threads One at a time.
class MediaFinder
{
public:
	// inFolder: of the timeline. inShownFolder: what it is called before people, when that is something else. Throws a
	// HostError of the kind kRequest for a media folder that is not there.
	explicit MediaFinder(std::filesystem::path inFolder,
		std::vector<std::filesystem::path> inMediaFolders = {}, std::filesystem::path inShownFolder = {});

	FoundMedia Find(std::string_view inUrl) const;
	// The path as it is called before people.
	std::filesystem::path GetShown(std::filesystem::path const& inPath) const;

	// A sound file that lies where the URL's file would, or does, and has its name but for the ending: the sound of a
	// movie. A guess.
	std::optional<std::filesystem::path> FindSound(std::string_view inUrl) const;
	// Where that looks.
	std::vector<std::filesystem::path> ListPlacesOfSound(std::string_view inUrl) const;

private:
	FoundMedia Search(std::string_view inUrl) const;

	// A path below a folder.
	struct Place
	{
		std::filesystem::path GetPath() const { return mFolder / mTail; }

		std::filesystem::path mFolder;
		std::filesystem::path mTail;
	};

	// Whether one of the places has a file, which becomes what was found, or is a timeline's, which is refused. The empty
	// places before it are noted.
	static bool TakeExact(std::vector<Place> const& inPlaces, FoundMedia& ioFound);
	// The timeline's own places.
	std::vector<Place> ListOwn(std::vector<std::filesystem::path> const& inPaths) const;
	// Those in the media folders.
	std::vector<Place> ListElsewhere(std::vector<std::filesystem::path> const& inPaths) const;
	std::vector<Place> ListSounds(std::string_view inUrl) const;
	std::optional<std::filesystem::path> FindAlike(std::vector<Place> const& inPlaces) const;

	std::filesystem::path mFolder;
	std::filesystem::path mShownFolder;
	std::vector<std::filesystem::path> mMediaFolders;
	std::shared_ptr<AlikeNames> mAlikeNames;
};

} // namespace SonaroHost
