#include "TemporaryFolder.h"

#include "SonaroHost/Base/HostError.h"
#include "SystemFiles.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <random>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace SonaroHost
{

namespace
{

constexpr std::string_view kPrefix = "sonaro-";
// Marked as long as the folder is in use.
constexpr std::string_view kMark = "in-use";

std::string MakeName()
{
	std::random_device random;
	std::string name(kPrefix);
	for (int i = 0; i < 4; ++i)
	{
		std::array<char, 8> digits{};
		auto const result = std::to_chars(digits.data(), digits.data() + digits.size(), random(), 36);
		name.append(digits.data(), result.ptr);
	}
	return name;
}

// Those of processes that were killed. A folder without a mark may be anybody's.
void RemoveStale(std::filesystem::path const& inParent)
{
	std::error_code error;
	std::vector<std::filesystem::path> found;
	for (std::string const& name : ListNames(inParent))
	{
		std::filesystem::path const path = inParent / name;
		bool const isMarked =
			name.starts_with(kPrefix) &&
			std::filesystem::is_directory(std::filesystem::symlink_status(path, error)) &&
			std::filesystem::is_regular_file(std::filesystem::symlink_status(path / kMark, error));
		if (isMarked)
		{
			found.push_back(path);
		}
	}
	for (std::filesystem::path const& folder : found)
	{
		RemoveUnmarked(folder / kMark);
		if (!std::filesystem::exists(folder / kMark, error) && !error)
		{
			std::filesystem::remove_all(folder, error);
		}
	}
}

std::filesystem::path MakeOwnFolder(std::filesystem::path const& inParent)
{
	std::error_code error;
	std::filesystem::path path = inParent / MakeName();
	// False when something has the name already, which must not be ours by chance then.
	if (!std::filesystem::create_directory(path, error))
	{
		RefuseOutput("cannot create a temporary folder in " + QuotePath(inParent) +
					 (error ? ": " + error.message() : std::string()) + "; set TMPDIR to another folder");
	}
	std::filesystem::permissions(path, std::filesystem::perms::owner_all, error);
	return path;
}

} // namespace

TemporaryFolder::TemporaryFolder()
	: mMark(std::make_unique<FileMark>())
{
	constexpr int kMostTries = 16;
	std::filesystem::path const parent = GetFolderOfTemporaries();
	RemoveStale(parent);
	for (int tries = 1;; ++tries)
	{
		mFolder.emplace([&] { return MakeOwnFolder(parent); });
		// Where the mark cannot be made, as on file systems that have none, the folder stays after a crash. It is taken
		// where a process that starts at the same moment found the mark before the system had set it: that one takes the
		// folder for one that was left behind, and removes it.
		bool const isTaken = !mMark->Make(GetPath() / kMark) && (errno == EEXIST || errno == ENOENT);
		if (!isTaken || tries == kMostTries)
		{
			return;
		}
	}
}

TemporaryFolder::~TemporaryFolder() = default;

} // namespace SonaroHost
