#include "SonaroHost/Otio/MediaFinder.h"

#include "MediaLocation.h"

#include "SonaroHost/HostError.h"

#include <iterator>
#include <system_error>
#include <utility>

namespace SonaroHost::Otio
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

std::string DescribeMissing(std::filesystem::path const& inPath)
{
	std::error_code error;
	if (!std::filesystem::exists(inPath, error))
	{
		return error ? "cannot be reached: " + error.message() : "does not exist";
	}
	return "is no file";
}

} // namespace

MediaFinder::MediaFinder(std::filesystem::path inFolder, std::vector<std::filesystem::path> inMediaFolders)
	: mFolder(std::move(inFolder)),
	  mMediaFolders(std::move(inMediaFolders))
{
}

FoundMedia MediaFinder::Find(std::string_view inUrl) const
{
	MediaLocation const location = ParseMediaLocation(inUrl);
	FoundMedia found;
	if (location.mPaths.empty())
	{
		found.mPath = std::filesystem::path(std::string(inUrl));
		found.mWhyMissing =
			location.mForeignScheme.empty()
				? "names no file"
				: "is reached through " + location.mForeignScheme +
					  ", and only files are read; copy it and name its folder as one of media";
		return found;
	}
	auto const isFile = [&found](std::filesystem::path const& inPath)
	{
		bool const isThere = IsFile(inPath);
		(isThere ? found.mPath : found.mLookedFor.emplace_back()) = inPath;
		return isThere;
	};
	for (std::filesystem::path const& path : location.mPaths)
	{
		if (IsTimeline(path))
		{
			found.mPath = mFolder / path;
			found.mWhyMissing = "is a timeline, which cannot be the media of another one";
			return found;
		}
		if (isFile(mFolder / path))
		{
			return found;
		}
	}
	for (std::filesystem::path const& folder : mMediaFolders)
	{
		for (std::filesystem::path const& path : location.mPaths)
		{
			for (std::filesystem::path tail = GetTail(path); !tail.empty(); tail = WithoutFirst(tail))
			{
				if (isFile(folder / tail))
				{
					found.mRemark = QuotePath(mFolder / location.mPaths.front()) +
									" is not there; taken from " + QuotePath(found.mPath);
					return found;
				}
			}
		}
	}
	found.mPath = mFolder / location.mPaths.front();
	found.mWhyMissing = DescribeMissing(found.mPath);
	return found;
}

} // namespace SonaroHost::Otio
