#include "FilePlace.h"

#include "NameForms.h"
#include "SystemFiles.h"

#include <algorithm>
#include <string>
#include <system_error>

namespace SonaroHost
{

namespace
{

// The number of links after which the system itself gives up.
constexpr int kMostLinks = 40;

bool HasTwoCases(char inCharacter)
{
	return (inCharacter >= 'a' && inCharacter <= 'z') || (inCharacter >= 'A' && inCharacter <= 'Z');
}

std::string SwapCase(std::string inName)
{
	constexpr char kCaseBit = 0x20;
	for (char& character : inName)
	{
		character = HasTwoCases(character) ? static_cast<char>(character ^ kCaseBit) : character;
	}
	return inName;
}

// Whether a file is found by its name in the other case, too. Two links to one file whose names differ like that look
// the same, which errs on the safe side.
bool IgnoresCase(std::filesystem::path const& inFolder)
{
	for (std::string const& name : ListNames(inFolder))
	{
		if (std::ranges::any_of(name, HasTwoCases))
		{
			auto const number = FindFileNumber(inFolder / name);
			return number && number == FindFileNumber(inFolder / SwapCase(name));
		}
	}
	return false;
}

} // namespace

std::filesystem::path FollowLinks(std::filesystem::path const& inPath)
{
	std::filesystem::path path = inPath;
	for (int links = 0; links < kMostLinks; ++links)
	{
		std::error_code error;
		std::filesystem::path const target = std::filesystem::read_symlink(path, error);
		if (error)
		{
			return path;
		}
		path = path.parent_path() / target;
	}
	return inPath;
}

FilePlace::FilePlace(std::filesystem::path const& inPath)
{
	std::filesystem::path names = Resolve(inPath);
	// A way up again through what is not there.
	if (std::ranges::find(names, "..") != names.end())
	{
		names = Resolve(mPath / names.lexically_normal());
	}
	for (std::filesystem::path const& name : names)
	{
		if (!name.empty() && name != ".")
		{
			mNames.push_back(name);
		}
	}
}

std::filesystem::path FilePlace::Resolve(std::filesystem::path const& inPath)
{
	std::filesystem::path names;
	mPath = inPath.empty() ? "." : inPath;
	for (mNumber = FindFileNumber(mPath); !mNumber; mNumber = FindFileNumber(mPath))
	{
		std::filesystem::path const target = FollowLinks(mPath);
		if (target != mPath)
		{
			mPath = target;
			continue;
		}
		names = names.empty() ? mPath.filename() : mPath.filename() / names;
		std::filesystem::path const parent = mPath.parent_path();
		if (parent == mPath)
		{
			break;
		}
		mPath = parent.empty() ? "." : parent;
	}
	return names;
}

bool FilePlace::IsAlike(FilePlace const& inOther) const
{
	return !IsThere() && mNames.size() == inOther.mNames.size() && HasAlikeStart(inOther, mNames.size());
}

bool FilePlace::IsSame(FilePlace const& inOther) const
{
	return mNames.size() == inOther.mNames.size() && HasSameStart(inOther, mNames.size());
}

bool FilePlace::IsWithin(FilePlace const& inFolder) const
{
	if (!inFolder.IsThere())
	{
		return mNames.size() > inFolder.mNames.size() && HasSameStart(inFolder, inFolder.mNames.size());
	}
	std::error_code error;
	std::filesystem::path folder = std::filesystem::canonical(mPath, error);
	folder = IsThere() ? folder.parent_path() : folder;
	for (; !folder.empty(); folder = folder.parent_path())
	{
		if (FindFileNumber(folder) == inFolder.mNumber)
		{
			return true;
		}
		if (folder == folder.parent_path())
		{
			break;
		}
	}
	return false;
}

bool FilePlace::HasSameStart(FilePlace const& inOther, std::size_t inNames) const
{
	return HasAlikeStart(inOther, inNames) &&
		   (std::equal(mNames.begin(), mNames.begin() + static_cast<std::ptrdiff_t>(inNames),
				inOther.mNames.begin()) ||
			   IgnoresCase(mPath));
}

bool FilePlace::HasAlikeStart(FilePlace const& inOther, std::size_t inNames) const
{
	return mNumber && mNumber == inOther.mNumber &&
		   std::equal(mNames.begin(), mNames.begin() + static_cast<std::ptrdiff_t>(inNames),
			   inOther.mNames.begin(),
			   [](std::filesystem::path const& inA, std::filesystem::path const& inB)
			   { return inA == inB || FoldName(inA.native()) == FoldName(inB.native()); });
}

} // namespace SonaroHost
