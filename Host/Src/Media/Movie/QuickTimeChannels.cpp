#include "QuickTimeChannels.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <string>
#include <string_view>

namespace SonaroHost
{

namespace
{

// A header with more bytes is none that is read here.
constexpr std::uint64_t kLargestHeader = std::uint64_t{1} << 28;

std::uint64_t GetNumber(std::string_view inBytes, std::size_t inPlace, std::size_t inSize)
{
	std::uint64_t value = 0;
	for (std::size_t i = 0; i < inSize && inPlace + i < inBytes.size(); ++i)
	{
		value = value << 8 | static_cast<unsigned char>(inBytes[inPlace + i]);
	}
	return value;
}

// Calls inVisit with the name and the content of each atom.
template <class Visit>
void ForEachAtom(std::string_view inAtoms, Visit const& inVisit)
{
	constexpr std::size_t kHeader = 8;
	while (inAtoms.size() >= kHeader)
	{
		std::uint64_t const size =
			std::clamp<std::uint64_t>(GetNumber(inAtoms, 0, 4), kHeader, inAtoms.size());
		inVisit(inAtoms.substr(4, 4), inAtoms.substr(kHeader, size - kHeader));
		inAtoms.remove_prefix(size);
	}
}

// The content of the first atom of a path such as "mdia minf"; empty where there is none.
std::string_view FindAtom(std::string_view inAtoms, std::string_view inPath)
{
	std::string_view found;
	ForEachAtom(inAtoms, [&](std::string_view inName, std::string_view inContent)
		{ found = found.empty() && inName == inPath.substr(0, 4) ? inContent : found; });
	return inPath.size() <= 4 ? found : FindAtom(found, inPath.substr(5));
}

// Of the first description of a track's samples, behind the fields that its version has.
std::uint32_t FindTag(std::string_view inTrack)
{
	std::string_view const descriptions = FindAtom(inTrack, "mdia minf stbl stsd");
	std::string_view const entry = descriptions.substr(std::min<std::size_t>(descriptions.size(), 16));
	std::size_t const fields[] = {28, 44, 64};
	std::size_t const version = std::min<std::size_t>(GetNumber(entry, 8, 2), 2);
	std::string_view const atoms = entry.substr(std::min(entry.size(), fields[version]));
	std::string_view channels = FindAtom(atoms, "chan");
	channels = channels.empty() ? FindAtom(atoms, "wave chan") : channels;
	return static_cast<std::uint32_t>(GetNumber(channels, 4, 4));
}

// The content of the atom that has the tracks, wherever in the file it lies.
std::string ReadMovieAtom(std::filesystem::path const& inPath)
{
	std::ifstream file(inPath, std::ios::binary);
	std::string header(16, '\0');
	for (std::uint64_t place = 0;
		 file.seekg(static_cast<std::streamoff>(place)) && file.read(header.data(), 16);)
	{
		std::uint64_t const shortSize = GetNumber(header, 0, 4);
		std::uint64_t const size = shortSize == 1 ? GetNumber(header, 8, 8) : shortSize;
		if (size < 8 || size > std::uint64_t{1} << 60)
		{
			break;
		}
		if (header.compare(4, 4, "moov") == 0 && size < kLargestHeader)
		{
			std::string content(size - 8, '\0');
			file.seekg(static_cast<std::streamoff>(place + 8));
			file.read(content.data(), static_cast<std::streamsize>(content.size()));
			content.resize(static_cast<std::size_t>(file.gcount()));
			return content;
		}
		place += size;
	}
	return {};
}

} // namespace

std::vector<std::uint32_t> ReadQuickTimeChannels(std::filesystem::path const& inPath)
{
	std::string const movie = ReadMovieAtom(inPath);
	std::vector<std::uint32_t> tags;
	ForEachAtom(movie,
		[&tags](std::string_view inName, std::string_view inTrack)
		{
			if (inName == "trak" && GetNumber(FindAtom(inTrack, "mdia hdlr"), 8, 4) == 0x736f756e)
			{
				tags.push_back(FindTag(inTrack));
			}
		});
	return tags;
}

} // namespace SonaroHost
