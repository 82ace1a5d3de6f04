#include "FreeName.h"

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

namespace SonaroHost
{

std::error_code RenameToFreeName(std::filesystem::path const& inFrom, std::filesystem::path const& inTo)
{
	if (renameat2(AT_FDCWD, inFrom.c_str(), AT_FDCWD, inTo.c_str(), RENAME_NOREPLACE) == 0)
	{
		return {};
	}
	bool const isUnknown = errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP;
	// A second name never replaces anything either.
	if (isUnknown && link(inFrom.c_str(), inTo.c_str()) == 0)
	{
		unlink(inFrom.c_str());
		return {};
	}
	bool const hasNoLinks = isUnknown && (errno == EPERM || errno == ENOSYS || errno == EOPNOTSUPP);
	if (!hasNoLinks)
	{
		return {errno, std::generic_category()};
	}
	std::error_code error;
	if (std::filesystem::exists(std::filesystem::symlink_status(inTo, error)))
	{
		return std::make_error_code(std::errc::file_exists);
	}
	std::filesystem::rename(inFrom, inTo, error);
	return error;
}

} // namespace SonaroHost
