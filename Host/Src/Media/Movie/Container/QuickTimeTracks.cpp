#include "QuickTimeTracks.h"

#include "SonaroHost/Files/WholeFile.h"

#include <algorithm>
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

// The descriptions of a track's samples, each with its size and name.
std::string_view FindDescriptions(std::string_view inTrack)
{
	std::string_view const descriptions = FindAtom(inTrack, "mdia minf stbl stsd");
	return descriptions.substr(std::min<std::size_t>(descriptions.size(), 8));
}

// Whether any of the descriptions is of encrypted samples, by its name or by the scheme in it.
bool AreEncrypted(std::string_view inDescriptions)
{
	bool isAny = false;
	ForEachAtom(inDescriptions,
		[&isAny](std::string_view inName, std::string_view inContent)
		{
			constexpr std::size_t kFields = 28;
			isAny = isAny || inName == "enca" || inName == "drms" ||
					!FindAtom(inContent.substr(std::min(inContent.size(), kFields)), "sinf").empty();
		});
	return isAny;
}

// The tag stands after the fields that the description has in its version.
std::uint32_t FindChannelTag(std::string_view inDescription)
{
	std::string_view const entry = inDescription.substr(std::min<std::size_t>(inDescription.size(), 8));
	std::size_t const fields[] = {28, 44, 64};
	std::size_t const version = std::min<std::size_t>(GetNumber(entry, 8, 2), 2);
	std::string_view const atoms = entry.substr(std::min(entry.size(), fields[version]));
	std::string_view channels = FindAtom(atoms, "chan");
	channels = channels.empty() ? FindAtom(atoms, "wave chan") : channels;
	return static_cast<std::uint32_t>(GetNumber(channels, 4, 4));
}

// Whether the data reference of a description names another file. Those without an address are left by writers that
// forget to set the flag for "in this file".
bool IsElsewhere(std::string_view inTrack, std::string_view inDescription)
{
	constexpr std::size_t kVersionAndFlags = 4;
	std::string_view const references = FindAtom(inTrack, "mdia minf dinf dref");
	std::uint64_t const wanted = GetNumber(inDescription, 14, 2);
	std::uint64_t number = 0;
	bool isElsewhere = false;
	ForEachAtom(references.substr(std::min<std::size_t>(references.size(), 8)),
		[&](std::string_view, std::string_view inReference)
		{
			bool const isOwn =
				inReference.size() <= kVersionAndFlags + 1 || (GetNumber(inReference, 3, 1) & 1) != 0;
			isElsewhere = isElsewhere || (++number == wanted && !isOwn);
		});
	return isElsewhere;
}

// The clock of a header of a movie or a track, whose times have 8 bytes from its first version on.
std::int64_t FindClock(std::string_view inHeader)
{
	return static_cast<std::int64_t>(GetNumber(inHeader, GetNumber(inHeader, 0, 1) == 0 ? 12 : 20, 4));
}

std::vector<QuickTimeTrack::Edit> ReadEdits(std::string_view inTrack)
{
	std::string_view const list = FindAtom(inTrack, "edts elst");
	std::size_t const size = GetNumber(list, 0, 1) == 0 ? 4 : 8;
	std::size_t const step = 2 * size + 4;
	std::vector<QuickTimeTrack::Edit> edits;
	for (std::size_t place = 8; place + step <= list.size() && edits.size() < GetNumber(list, 4, 4);
		 place += step)
	{
		std::uint64_t const time = GetNumber(list, place + size, size);
		edits.push_back({static_cast<std::int64_t>(GetNumber(list, place, size) & (~std::uint64_t{0} >> 1)),
			size == 4 ? std::int64_t{static_cast<std::int32_t>(time)} : static_cast<std::int64_t>(time),
			static_cast<std::int64_t>(GetNumber(list, place + 2 * size, 4))});
	}
	return edits;
}

QuickTimeTrack ReadSoundTrack(std::string_view inTrack)
{
	std::string_view const description = FindDescriptions(inTrack);
	QuickTimeTrack track;
	track.mChannelTag = FindChannelTag(description);
	track.mIsElsewhere = IsElsewhere(inTrack, description);
	track.mIsEncrypted = AreEncrypted(description);
	track.mTrackClock = FindClock(FindAtom(inTrack, "mdia mdhd"));
	track.mEdits = ReadEdits(inTrack);
	return track;
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
			// A damaged size takes no more memory than there is in the file.
			auto const length = static_cast<std::uint64_t>(GetFileLength(inPath));
			std::string content(std::min(size - 8, length - std::min(length, place + 8)), '\0');
			file.seekg(static_cast<std::streamoff>(place + 8));
			file.read(content.data(), static_cast<std::streamsize>(content.size()));
			content.resize(static_cast<std::size_t>(file.gcount()));
			CheckRead(file, inPath);
			return content;
		}
		place += size;
	}
	CheckRead(file, inPath);
	return {};
}

} // namespace

std::vector<QuickTimeTrack> ReadQuickTimeTracks(std::filesystem::path const& inPath)
{
	constexpr std::uint64_t kSound = 0x736f756e;
	std::string const movie = ReadMovieAtom(inPath);
	std::vector<QuickTimeTrack> tracks;
	ForEachAtom(movie,
		[&](std::string_view inName, std::string_view inTrack)
		{
			if (inName == "trak" && GetNumber(FindAtom(inTrack, "mdia hdlr"), 8, 4) == kSound)
			{
				tracks.push_back(ReadSoundTrack(inTrack));
				tracks.back().mMovieClock = FindClock(FindAtom(movie, "mvhd"));
			}
		});
	return tracks;
}

} // namespace SonaroHost
