#pragma once

#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <string>

namespace SonaroHost
{

// All bytes of a file. Throws a HostError of kind kInput that names it and says why it cannot be read, with what to do about
// it: a file that cannot be read to its end is not taken for a shorter one.
// Threads: any.
std::string ReadWholeFile(std::filesystem::path const& inPath, std::string const& inRemedy = {});

// Throws such an error where a read of the file has just failed, other than at its end.
void CheckRead(
	std::ifstream const& inFile, std::filesystem::path const& inPath, std::string const& inRemedy = {});

// In bytes. Throws a HostError of kind kInput where the file has gone, or cannot be asked.
std::int64_t GetFileLength(std::filesystem::path const& inPath);

} // namespace SonaroHost
