#pragma once

#include <filesystem>
#include <system_error>

namespace SonaroHost
{

// Renames a file unless something has the new name already, which is the error std::errc::file_exists. Nobody can take the
// name in between, but on file systems that can neither do this nor give a file two names.
std::error_code RenameToFreeName(std::filesystem::path const& inFrom, std::filesystem::path const& inTo);

} // namespace SonaroHost
