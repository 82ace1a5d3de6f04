#include "SonaroHost/Files/Temporary.h"

#include "FreeName.h"

#include <cstdlib>
#include <map>
#include <mutex>
#include <new>

namespace SonaroHost
{

namespace
{

struct List
{
	std::mutex mMutex;
	std::map<std::filesystem::path, Temporary::Removal> mPaths;
};

// Never destroyed: a clean-up may come while the process is ending in another way.
List& GetList()
{
	static List* const sList = new List;
	return *sList;
}

// False where something is left.
bool TryToRemove(std::filesystem::path const& inPath, Temporary::Removal inRemoval)
{
	std::error_code error;
	if (inRemoval == Temporary::Removal::kWhileEmpty)
	{
		std::filesystem::remove(inPath, error);
		return true;
	}
	auto const find = [&error](std::filesystem::path const& inFound)
	{ return std::filesystem::symlink_status(inFound, error).type(); };
	auto const kFolder = std::filesystem::file_type::directory;
	// Another thread may still be adding files to a folder, or removing it, too. Under another name nobody finds it.
	std::filesystem::path moved = inPath;
	moved += ".removed";
	if (find(inPath) != kFolder && find(moved) != kFolder)
	{
		std::filesystem::remove(inPath, error);
		return find(inPath) == std::filesystem::file_type::not_found;
	}
	std::filesystem::rename(inPath, moved, error);
	std::filesystem::remove_all(moved, error);
	std::filesystem::remove_all(inPath, error);
	return find(inPath) != kFolder && find(moved) != kFolder;
}

void Remove(std::filesystem::path const& inPath, Temporary::Removal inRemoval) noexcept
{
	constexpr int kTries = 100;
	for (int tries = 0; tries < kTries; ++tries)
	{
		try
		{
			if (TryToRemove(inPath, inRemoval))
			{
				return;
			}
		}
		catch (std::bad_alloc const&)
		{
			// Removing takes memory, which another thread may have freed in the meantime.
		}
	}
}

} // namespace

std::filesystem::path GetFolderOfTemporaries()
{
	char const* const named = std::getenv("TMPDIR");
	return named && *named != '\0' ? named : "/tmp";
}

Temporary::Temporary(std::function<std::filesystem::path()> const& inMake, Removal inRemoval)
	: mRemoval(inRemoval)
{
	List& list = GetList();
	std::lock_guard const lock(list.mMutex);
	mPath = inMake();
	try
	{
		list.mPaths.emplace(mPath, mRemoval);
	}
	catch (std::bad_alloc const&)
	{
		Remove(mPath, mRemoval);
		throw;
	}
}

Temporary::~Temporary()
{
	if (mIsRenamed)
	{
		return;
	}
	// The lock is not held, since large folders take long; a clean-up at the same time does no harm.
	Remove(mPath, mRemoval);
	List& list = GetList();
	std::lock_guard const lock(list.mMutex);
	list.mPaths.erase(mPath);
}

std::error_code Temporary::Rename(std::filesystem::path const& inName, bool inReplaces)
{
	List& list = GetList();
	std::lock_guard const lock(list.mMutex);
	std::error_code error;
	if (inReplaces)
	{
		std::filesystem::rename(mPath, inName, error);
	}
	else
	{
		error = RenameToFreeName(mPath, inName);
	}
	if (!error)
	{
		mIsRenamed = true;
		list.mPaths.erase(mPath);
	}
	return error;
}

void Temporary::RemoveAll()
{
	List& list = GetList();
	// Never given back.
	list.mMutex.lock();
	// What is in a folder comes after it in the list.
	for (auto entry = list.mPaths.rbegin(); entry != list.mPaths.rend(); ++entry)
	{
		Remove(entry->first, entry->second);
	}
}

} // namespace SonaroHost
