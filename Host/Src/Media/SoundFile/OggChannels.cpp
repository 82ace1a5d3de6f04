#include "OggChannels.h"

#include "SonaroHost/Files/WholeFile.h"

#include <sndfile.h>

#include <array>
#include <cstddef>
#include <fstream>
#include <string_view>

namespace SonaroHost
{

namespace
{

// Vorbis I, section 4.3.9, which channel mapping family 1 of Opus (RFC 7845, section 5.1.1.2) shares, for 3 channels
// and more. FLAC has WAV's order in Ogg, too.
std::vector<unsigned> GetVorbisOrder(unsigned inChannels)
{
	switch (inChannels)
	{
	case 3:
		return {0, 2, 1};
	case 5:
		return {0, 2, 1, 3, 4};
	case 6:
		return {0, 2, 1, 5, 3, 4};
	case 7:
		return {0, 2, 1, 6, 5, 3, 4};
	case 8:
		return {0, 2, 1, 7, 5, 6, 3, 4};
	default:
		return {};
	}
}

// Whether an Opus header, which stands alone in the first page, says that its channels have the places of Vorbis.
bool HasOpusPlaces(std::filesystem::path const& inPath)
{
	constexpr std::size_t kFamily = 18;
	std::array<char, 512> bytes{};
	std::ifstream file(inPath, std::ios::binary);
	file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
	CheckRead(file, inPath);
	std::string_view const page(bytes.data(), bytes.size());
	std::size_t const header = page.find("OpusHead");
	return header < page.size() - kFamily && page[header + kFamily] == 1;
}

} // namespace

std::vector<unsigned> FindOggOrder(std::filesystem::path const& inPath, int inFormat, unsigned inChannels)
{
	int const codec = inFormat & SF_FORMAT_SUBMASK;
	bool const isOgg = (inFormat & SF_FORMAT_TYPEMASK) == SF_FORMAT_OGG;
	bool const hasPlaces = codec == SF_FORMAT_VORBIS || (codec == SF_FORMAT_OPUS && HasOpusPlaces(inPath));
	return isOgg && hasPlaces ? GetVorbisOrder(inChannels) : std::vector<unsigned>();
}

} // namespace SonaroHost
