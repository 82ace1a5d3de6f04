#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace SonaroHost
{

// The length that the header of an ASF file states, in microseconds; nothing where it states none. libavformat leaves it
// out for files that are shorter than their header says.
std::optional<std::int64_t> ReadAsfLength(std::filesystem::path const& inPath);

} // namespace SonaroHost
