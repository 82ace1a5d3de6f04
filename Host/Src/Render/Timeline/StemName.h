#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace SonaroHost::Otio
{

// A file name for a stem: its number among inCount, from 1 on, and what of its name any file system can hold.
std::filesystem::path MakeStemName(
	std::size_t inIndex, std::size_t inCount, std::string const& inName, std::string const& inEnding);

} // namespace SonaroHost::Otio
