#include "AsfLength.h"

#include "SonaroHost/Files/WholeFile.h"

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <string>
#include <string_view>

namespace SonaroHost
{

namespace
{

using namespace std::string_view_literals;

// The identifier of the file properties object, and where its fields stand after it.
constexpr std::string_view kFileProperties =
	"\xa1\xdc\xab\x8c\x47\xa9\xcf\x11\x8e\xe4\x00\xc0\x0c\x20\x53\x65"sv;
constexpr std::size_t kPlayDuration = 64;
constexpr std::size_t kPreroll = 80;
constexpr std::size_t kFlags = 88;

constexpr std::streamsize kLargestAsfHeader = 65536;

std::uint64_t GetLittleEndian64(std::string_view inBytes)
{
	std::uint64_t value = 0;
	for (std::size_t i = 8; i > 0; --i)
	{
		value = value << 8 | static_cast<unsigned char>(inBytes[i - 1]);
	}
	return value;
}

} // namespace

std::optional<std::int64_t> ReadAsfLength(std::filesystem::path const& inPath)
{
	constexpr std::uint64_t kLongest = std::uint64_t{1} << 50;
	std::string header(kLargestAsfHeader, '\0');
	std::ifstream file(inPath, std::ios::binary);
	file.read(header.data(), kLargestAsfHeader);
	CheckRead(file, inPath);
	header.resize(static_cast<std::size_t>(std::max<std::streamsize>(file.gcount(), 0)));
	std::size_t const found = header.find(kFileProperties);
	if (found == std::string::npos || header.size() < found + kFlags + 8)
	{
		return std::nullopt;
	}
	std::string_view const object = std::string_view(header).substr(found);
	// The flag is set while a file is written. The duration has units of 100 ns and contains the preroll, in ms.
	bool const isUnfinished = (object[kFlags] & 1) != 0;
	std::uint64_t const duration = GetLittleEndian64(object.substr(kPlayDuration)) / 10;
	std::uint64_t const preroll = GetLittleEndian64(object.substr(kPreroll));
	bool const isStated =
		!isUnfinished && duration < kLongest && preroll < kLongest / 1000 && duration > preroll * 1000;
	return isStated ? std::optional(static_cast<std::int64_t>(duration - preroll * 1000)) : std::nullopt;
}

} // namespace SonaroHost
