#include "MovieFile.h"

#include "SonaroHost/Base/PrintableText.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <fstream>
#include <iterator>
#include <string_view>

namespace SonaroHost
{

namespace
{

using namespace std::string_view_literals;

constexpr std::string_view kEndings[] = {".mov", ".mp4", ".m4v", ".mkv", ".webm", ".mxf", ".avi", ".mts",
	".m2ts", ".m2t", ".ts", ".mpg", ".mpeg", ".m2v", ".vob", ".wmv", ".asf", ".flv", ".3gp", ".3g2", ".ogv",
	".dv", ".qt", ".r3d", ".braw"};

// Types of ISO base media files that say that there is sound alone.
constexpr std::string_view kSoundTypes[] = {"M4A ", "M4B ", "M4P ", "F4A ", "F4B "};

struct Mark
{
	std::size_t mPosition;
	std::string_view mBytes;
};

// What movies have in their first bytes: Matroska and WebM, AVI, MXF, ASF, FLV, MPEG program streams, and QuickTime
// files, whose first atom is not always their type.
constexpr Mark kMarks[] = {
	{0, "\x1a\x45\xdf\xa3"sv},
	{8, "AVI "sv},
	{0, "\x06\x0e\x2b\x34\x02\x05\x01\x01\x0d\x01\x02"sv},
	{0, "\x30\x26\xb2\x75\x8e\x66\xcf\x11"sv},
	{0, "FLV\x01"sv},
	{0, "\x00\x00\x01\xba"sv},
	{4, "moov"sv},
	{4, "mdat"sv},
	{4, "wide"sv},
};

bool HasMark(std::string_view inBytes, Mark const& inMark)
{
	return inBytes.size() >= inMark.mPosition &&
		   inBytes.substr(inMark.mPosition, inMark.mBytes.size()) == inMark.mBytes;
}

bool IsTransportStream(std::string_view inBytes)
{
	// Packets of 188 bytes, in some files with four bytes of time before each.
	constexpr char kSync = 0x47;
	for (auto const& [first, step] : {std::pair<std::size_t, std::size_t>{0, 188}, {4, 192}})
	{
		if (inBytes.size() > first + 2 * step && inBytes[first] == kSync && inBytes[first + step] == kSync &&
			inBytes[first + 2 * step] == kSync)
		{
			return true;
		}
	}
	return false;
}

bool BeginsAsMovie(std::string_view inBytes)
{
	if (HasMark(inBytes, {4, "ftyp"sv}))
	{
		return std::ranges::none_of(kSoundTypes,
			[inBytes](std::string_view inType) {
				return HasMark(inBytes, {8, inType});
			});
	}
	return IsTransportStream(inBytes) ||
		   std::ranges::any_of(kMarks, [inBytes](Mark const& inMark) { return HasMark(inBytes, inMark); });
}

} // namespace

bool HasMovieEnding(std::filesystem::path const& inPath)
{
	return std::ranges::find(kEndings, GetLowerEnding(inPath)) != std::end(kEndings);
}

bool IsMovieFile(std::filesystem::path const& inPath)
{
	if (HasMovieEnding(inPath))
	{
		return true;
	}
	std::array<char, 512> bytes{};
	std::ifstream file(inPath, std::ios::binary);
	file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
	return BeginsAsMovie(
		{bytes.data(), static_cast<std::size_t>(std::max<std::streamsize>(file.gcount(), 0))});
}

} // namespace SonaroHost
