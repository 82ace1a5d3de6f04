#include "SonaroHost/Media/MediaFinder.h"

#include "Search/AlikeNames.h"
#include "Search/MediaLocation.h"

#include "SonaroHost/Base/HostError.h"

#include <algorithm>
#include <iterator>
#include <system_error>
#include <utility>

namespace SonaroHost
{

namespace
{

bool IsFile(std::filesystem::path const& inPath)
{
	std::error_code error;
	return std::filesystem::is_regular_file(inPath, error);
}

// The path without its root and without what leads upward at its start.
std::filesystem::path GetTail(std::filesystem::path const& inPath)
{
	std::filesystem::path const normal = inPath.relative_path().lexically_normal();
	std::filesystem::path tail;
	for (std::filesystem::path const& part : normal)
	{
		bool const isStep = part == ".." || part == "." || part.empty();
		tail = isStep ? tail : tail / part;
	}
	return tail;
}

std::filesystem::path WithoutFirst(std::filesystem::path const& inPath)
{
	std::filesystem::path result;
	for (auto part = std::next(inPath.begin()); part != inPath.end(); ++part)
	{
		result /= *part;
	}
	return result;
}

bool IsTimeline(std::filesystem::path const& inPath)
{
	std::filesystem::path const extension = inPath.extension();
	return extension == ".otio" || extension == ".otioz" || extension == ".otiod";
}

std::string DescribeAbsence(std::filesystem::path const& inPath)
{
	std::error_code error;
	if (!std::filesystem::exists(inPath, error))
	{
		return error ? "cannot be reached: " + error.message() : "does not exist";
	}
	return "is not a file";
}

// Endings of sound files, the most usual first.
constexpr std::string_view kSoundEndings[] = {
	".wav", ".bwf", ".aif", ".aiff", ".aifc", ".flac", ".caf", ".w64", ".rf64", ".mp3", ".ogg", ".opus"};

void CheckFolder(std::filesystem::path const& inFolder)
{
	std::error_code error;
	if (!std::filesystem::is_directory(inFolder, error))
	{
		std::string const why = std::filesystem::exists(inFolder, error) ? "is not a folder"
								: error ? "cannot be reached: " + error.message()
										: "does not exist";
		throw HostError(HostError::Kind::kRequest, {inFolder, {}, "the media folder " + why, {}});
	}
}

} // namespace

MediaFinder::MediaFinder(std::filesystem::path inFolder, std::vector<std::filesystem::path> inMediaFolders,
	std::filesystem::path inShownFolder)
	: mFolder(std::move(inFolder)),
	  mShownFolder(std::move(inShownFolder)),
	  mMediaFolders(std::move(inMediaFolders)),
	  mAlikeNames(std::make_shared<AlikeNames>())
{
	std::ranges::for_each(mMediaFolders, CheckFolder);
}

FoundMedia MediaFinder::Find(std::string_view inUrl) const
{
	FoundMedia found = Search(inUrl);
	found.mShownPath = GetShown(found.mPath);
	return found;
}

std::filesystem::path MediaFinder::GetShown(std::filesystem::path const& inPath) const
{
	std::string const folder = mFolder.string() + "/";
	std::string const path = inPath.string();
	bool const isRenamed = !mShownFolder.empty() && path.starts_with(folder);
	return isRenamed ? mShownFolder / path.substr(folder.size()) : inPath;
}

FoundMedia MediaFinder::Search(std::string_view inUrl) const
{
	MediaLocation const location = ParseMediaLocation(inUrl);
	bool const isForeign = !location.mForeignScheme.empty();
	std::vector<Place> const own = ListOwn(location.mPaths);
	std::vector<Place> const elsewhere = ListElsewhere(isForeign ? location.mElsewhere : location.mPaths);
	std::filesystem::path const named =
		own.empty() ? std::filesystem::path(std::string(inUrl)) : own.front().GetPath();
	FoundMedia found;
	if (TakeExact(own, found))
	{
		return found;
	}
	if (TakeExact(elsewhere, found))
	{
		found.mRemark = QuotePath(GetShown(named)) +
						(isForeign ? " is not a local file" : " does not exist") + "; using " +
						QuotePath(GetShown(found.mPath));
		return found;
	}
	for (std::vector<Place> const* const places : {&own, &elsewhere})
	{
		if (auto const path = FindAlike(*places))
		{
			found.mPath = *path;
			found.mRemark = QuotePath(GetShown(named)) + " does not exist; using " +
							QuotePath(GetShown(*path)) + ", whose name differs only in case or Unicode form";
			found.mIsGuess = true;
			return found;
		}
	}
	found.mPath = named;
	found.mWhyMissing = isForeign ? "has the scheme " + location.mForeignScheme +
										", but only local files can be read; copy it to a media folder"
						: own.empty() ? "does not name a file"
									  : DescribeAbsence(named);
	return found;
}

bool MediaFinder::TakeExact(std::vector<Place> const& inPlaces, FoundMedia& ioFound)
{
	for (Place const& place : inPlaces)
	{
		std::filesystem::path const path = place.GetPath();
		bool const isTimeline = IsTimeline(place.mTail);
		if (isTimeline || IsFile(path))
		{
			ioFound.mPath = path;
			ioFound.mWhyMissing = isTimeline ? "is a timeline, which cannot be used as media" : "";
			return true;
		}
		ioFound.mLookedFor.push_back(path);
	}
	return false;
}

std::optional<std::filesystem::path> MediaFinder::FindSound(std::string_view inUrl) const
{
	return FindAlike(ListSounds(inUrl));
}

std::vector<std::filesystem::path> MediaFinder::ListPlacesOfSound(std::string_view inUrl) const
{
	std::vector<std::filesystem::path> paths;
	for (Place const& place : ListSounds(inUrl))
	{
		paths.push_back(place.GetPath());
	}
	return paths;
}

std::vector<MediaFinder::Place> MediaFinder::ListSounds(std::string_view inUrl) const
{
	MediaLocation const location = ParseMediaLocation(inUrl);
	std::vector<Place> places = ListOwn(location.mPaths);
	std::vector<Place> const elsewhere =
		ListElsewhere(location.mForeignScheme.empty() ? location.mPaths : location.mElsewhere);
	places.insert(places.end(), elsewhere.begin(), elsewhere.end());
	std::vector<Place> sounds;
	for (Place const& place : places)
	{
		for (std::string_view const ending : kSoundEndings)
		{
			Place& sound = sounds.emplace_back(place);
			sound.mTail.replace_extension(ending);
		}
	}
	return sounds;
}

std::vector<MediaFinder::Place> MediaFinder::ListOwn(std::vector<std::filesystem::path> const& inPaths) const
{
	std::vector<Place> places;
	places.reserve(inPaths.size());
	for (std::filesystem::path const& path : inPaths)
	{
		// The folder of an absolute path is its root.
		places.push_back({path.is_absolute() ? path.root_path() : mFolder, path.relative_path()});
	}
	return places;
}

std::vector<MediaFinder::Place> MediaFinder::ListElsewhere(
	std::vector<std::filesystem::path> const& inPaths) const
{
	std::vector<Place> places;
	for (std::filesystem::path const& folder : mMediaFolders)
	{
		for (std::filesystem::path const& path : inPaths)
		{
			for (std::filesystem::path tail = GetTail(path); !tail.empty(); tail = WithoutFirst(tail))
			{
				places.push_back({folder, tail});
			}
		}
	}
	return places;
}

std::optional<std::filesystem::path> MediaFinder::FindAlike(std::vector<Place> const& inPlaces) const
{
	for (Place const& place : inPlaces)
	{
		if (auto path = mAlikeNames->Find(place.mFolder, place.mTail))
		{
			return path;
		}
	}
	return std::nullopt;
}

} // namespace SonaroHost
