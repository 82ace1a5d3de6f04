#include "TemporaryFolder.h"

#include "SonaroHost/Base/HostError.h"
#include "SystemFiles.h"

#include <array>
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
	for (std::filesystem::directory_iterator entry(inParent, error), end; !error && entry != end;
		 entry.increment(error))
	{
		std::error_code ignored;
		bool const isMarked =
			entry->path().filename().native().starts_with(kPrefix) &&
			std::filesystem::is_directory(entry->symlink_status(ignored)) &&
			std::filesystem::is_regular_file(std::filesystem::symlink_status(entry->path() / kMark, ignored));
		if (isMarked)
		{
			found.push_back(entry->path());
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

} // namespace

TemporaryFolder::TemporaryFolder()
	: mMark(std::make_unique<FileMark>())
{
	std::error_code error;
	std::filesystem::path const parent = GetFolderOfTemporaries();
	RemoveStale(parent);
	mFolder.emplace(
		[&]
		{
			std::filesystem::path path = parent / MakeName();
			// False when something has the name already, which must not be ours by chance then.
			if (!std::filesystem::create_directory(path, error))
			{
				RefuseOutput("cannot create a temporary folder in " + QuotePath(parent) +
							 (error ? ": " + error.message() : std::string()) +
							 "; set TMPDIR to another folder");
			}
			return path;
		});
	std::filesystem::permissions(GetPath(), std::filesystem::perms::owner_all, error);
	// Where the mark cannot be made, as on file systems that have none, the folder stays after a crash.
	mMark->Make(GetPath() / kMark);
}

TemporaryFolder::~TemporaryFolder() = default;

} // namespace SonaroHost
