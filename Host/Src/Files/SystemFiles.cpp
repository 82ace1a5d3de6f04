#include "SystemFiles.h"

#include "SonaroHost/Files/Temporary.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <limits>
#include <string>
#include <string_view>
#include <system_error>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace SonaroHost
{

namespace
{

FileNumber GetNumber(struct stat const& inStatus)
{
	return {static_cast<std::uint64_t>(inStatus.st_dev), static_cast<std::uint64_t>(inStatus.st_ino)};
}

// Whether the name still leads to the open file.
bool HasName(int inDescriptor, std::filesystem::path const& inPath)
{
	struct stat open = {};
	struct stat named = {};
	return fstat(inDescriptor, &open) == 0 && lstat(inPath.c_str(), &named) == 0 &&
		   GetNumber(open) == GetNumber(named);
}

// Null without a descriptor. Takes it over.
FileHandle Open(int inDescriptor)
{
	FileHandle file(inDescriptor < 0 ? nullptr : fdopen(inDescriptor, "w+b"));
	if (!file && inDescriptor >= 0)
	{
		close(inDescriptor);
	}
	return file;
}

} // namespace

bool IsThere(std::filesystem::path const& inPath)
{
	std::error_code error;
	return std::filesystem::exists(inPath, error);
}

std::optional<FileNumber> FindFileNumber(std::filesystem::path const& inPath)
{
	struct stat status = {};
	return stat(inPath.c_str(), &status) == 0 ? std::optional(GetNumber(status)) : std::nullopt;
}

std::vector<std::string> ListNames(std::filesystem::path const& inFolder)
{
	std::error_code error;
	return ListNames(inFolder, error);
}

std::vector<std::string> ListNames(std::filesystem::path const& inFolder, std::error_code& outError)
{
	struct Closing
	{
		void operator()(DIR* inOpened) const { closedir(inOpened); }
	};
	std::vector<std::string> names;
	std::unique_ptr<DIR, Closing> const folder(opendir(inFolder.c_str()));
	// Only this shows whether a list ends or breaks off.
	errno = folder ? 0 : errno;
	while (dirent const* const entry = folder ? readdir(folder.get()) : nullptr)
	{
		std::string_view const name = entry->d_name;
		if (name != "." && name != "..")
		{
			names.emplace_back(name);
		}
		errno = 0;
	}
	outError = std::error_code(errno, std::generic_category());
	return names;
}

FileMark::~FileMark()
{
	Release();
}

FileHandle FileMark::Make(std::filesystem::path const& inPath)
{
	constexpr mode_t kEverybodyAsFarAsTheMaskAllows = 0666;
	Release();
	// Never a file or a link that is there already.
	int const made =
		open(inPath.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kEverybodyAsFarAsTheMaskAllows);
	if (made < 0)
	{
		return nullptr;
	}
	// Between both calls, a process that looks for files that were left behind may have taken this one for such.
	bool const isRefused = flock(made, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
	if (isRefused || !HasName(made, inPath))
	{
		close(made);
		errno = EEXIST;
		return nullptr;
	}
	// The mark belongs to both descriptors, and so outlives the handle.
	mDescriptor = fcntl(made, F_DUPFD_CLOEXEC, 0);
	FileHandle file(mDescriptor < 0 ? nullptr : fdopen(made, "w+b"));
	if (!file)
	{
		int const error = errno;
		unlink(inPath.c_str());
		close(made);
		Release();
		errno = error;
	}
	return file;
}

void FileMark::Release()
{
	if (mDescriptor >= 0)
	{
		close(mDescriptor);
		mDescriptor = -1;
	}
}

void RemoveUnmarked(std::filesystem::path const& inPath)
{
	// Opening anything but a regular file, such as a pipe, must not wait.
	int const file = open(inPath.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
	if (file < 0)
	{
		return;
	}
	struct stat status = {};
	if (fstat(file, &status) == 0 && S_ISREG(status.st_mode) && flock(file, LOCK_EX | LOCK_NB) == 0 &&
		HasName(file, inPath))
	{
		unlink(inPath.c_str());
	}
	close(file);
}

FileHandle MakeUnnamedFile()
{
	std::filesystem::path const folder = GetFolderOfTemporaries();
	if (FileHandle file = Open(open(folder.c_str(), O_RDWR | O_TMPFILE | O_CLOEXEC, S_IRUSR | S_IWUSR)))
	{
		return file;
	}
	// Not every file system has files without names.
	std::string name = (folder / "sonaro-XXXXXX").string();
	int const file = mkostemp(name.data(), O_CLOEXEC);
	if (file >= 0)
	{
		unlink(name.c_str());
	}
	return Open(file);
}

std::uint64_t GetOpenFileLimit()
{
	rlimit limit{};
	constexpr std::uint64_t kUsual = 1024;
	return getrlimit(RLIMIT_NOFILE, &limit) == 0 ? limit.rlim_cur : kUsual;
}

std::uint64_t GetAddressRoom()
{
	rlimit limit{};
	if (getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY)
	{
		return std::numeric_limits<std::uint64_t>::max();
	}
	std::uint64_t pages = 0;
	std::ifstream("/proc/self/statm") >> pages;
	std::uint64_t const used = pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
	return limit.rlim_cur - std::min<std::uint64_t>(used, limit.rlim_cur);
}

bool CopyRest(std::FILE* ioFrom, std::FILE* outTo)
{
	std::array<char, 65536> piece{};
	while (std::size_t const count = std::fread(piece.data(), 1, piece.size(), ioFrom))
	{
		if (std::fwrite(piece.data(), 1, count, outTo) != count)
		{
			return false;
		}
	}
	return true;
}

std::int64_t GetFileLength(std::FILE* inFile)
{
	struct stat status = {};
	return fstat(fileno(inFile), &status) == 0 ? static_cast<std::int64_t>(status.st_size) : -1;
}

std::filesystem::path GetPathOfOpenFile(std::FILE* inFile)
{
	return "/proc/self/fd/" + std::to_string(fileno(inFile));
}

} // namespace SonaroHost
