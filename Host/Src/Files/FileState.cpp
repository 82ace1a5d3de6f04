#include "SonaroHost/Files/FileState.h"

#include <sys/stat.h>

namespace SonaroHost
{

std::optional<FileState> ReadFileState(std::filesystem::path const& inPath)
{
	struct stat status
	{
	};
	if (::stat(inPath.c_str(), &status) != 0)
	{
		return std::nullopt;
	}
	constexpr std::int64_t kNanoseconds = 1'000'000'000;
	return FileState{status.st_dev, status.st_ino, status.st_size,
		status.st_mtim.tv_sec * kNanoseconds + status.st_mtim.tv_nsec};
}

} // namespace SonaroHost
