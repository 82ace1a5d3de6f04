#include "SonaroHost/Files/WholeFile.h"

#include "SonaroHost/Base/HostError.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <fstream>
#include <system_error>

namespace SonaroHost
{

namespace
{

[[noreturn]] void RefuseRead(std::filesystem::path const& inPath, std::string const& inRemedy)
{
	RefuseFile(inPath,
		"cannot be read" + (errno != 0 ? ": " + std::generic_category().message(errno) : std::string()),
		inRemedy);
}

} // namespace

std::string ReadWholeFile(std::filesystem::path const& inPath, std::string const& inRemedy)
{
	errno = 0;
	std::ifstream file(inPath, std::ios::binary);
	std::string bytes;
	std::array<char, 65536> piece{};
	while (file.read(piece.data(), static_cast<std::streamsize>(piece.size())) || file.gcount() > 0)
	{
		bytes.append(piece.data(), static_cast<std::size_t>(file.gcount()));
	}
	if (!file.is_open())
	{
		RefuseRead(inPath, inRemedy);
	}
	CheckRead(file, inPath, inRemedy);
	return bytes;
}

void CheckRead(std::ifstream const& inFile, std::filesystem::path const& inPath, std::string const& inRemedy)
{
	if (inFile.bad())
	{
		RefuseRead(inPath, inRemedy);
	}
}

std::int64_t GetFileLength(std::filesystem::path const& inPath)
{
	std::error_code error;
	std::uintmax_t const length = std::filesystem::file_size(inPath, error);
	if (error)
	{
		RefuseFile(inPath, "cannot be read: " + error.message());
	}
	return static_cast<std::int64_t>(length);
}

} // namespace SonaroHost
