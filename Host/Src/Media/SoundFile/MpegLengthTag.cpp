#include "MpegLengthTag.h"

#include "SonaroHost/Files/WholeFile.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <fstream>

namespace SonaroHost
{

namespace
{

using FrameHeader = std::array<std::uint8_t, 4>;

bool IsVersion1(FrameHeader const& inHeader)
{
	return (inHeader[1] & 0x18) == 0x18;
}
bool IsMono(FrameHeader const& inHeader)
{
	return (inHeader[3] & 0xc0) == 0xc0;
}
bool IsLayer3(FrameHeader const& inHeader)
{
	return (inHeader[1] & 0x06) == 0x02;
}
bool HasChecksum(FrameHeader const& inHeader)
{
	return (inHeader[1] & 0x01) == 0;
}

// Eleven set bits, a version, a layer, a bit rate and a sample rate that exist.
bool IsFrameHeader(FrameHeader const& inHeader)
{
	bool const isSynchronised = inHeader[0] == 0xff && (inHeader[1] & 0xe0) == 0xe0;
	bool const hasVersion = (inHeader[1] & 0x18) != 0x08;
	bool const hasLayer = (inHeader[1] & 0x06) != 0;
	bool const hasBitRate = (inHeader[2] & 0xf0) != 0xf0;
	bool const hasSampleRate = (inHeader[2] & 0x0c) != 0x0c;
	return isSynchronised && hasVersion && hasLayer && hasBitRate && hasSampleRate;
}

// The bytes between the frame header and the main data of a layer 3 frame.
std::size_t GetSideInfoSize(FrameHeader const& inHeader)
{
	if (IsVersion1(inHeader))
	{
		return IsMono(inHeader) ? 17 : 32;
	}
	return IsMono(inHeader) ? 9 : 17;
}

std::uint32_t ReadBigEndian32(std::uint8_t const* inBytes)
{
	return static_cast<std::uint32_t>(inBytes[0]) << 24 | static_cast<std::uint32_t>(inBytes[1]) << 16 |
		   static_cast<std::uint32_t>(inBytes[2]) << 8 | inBytes[3];
}

// Where the stream starts: after an ID3v2 tag (ten bytes, the last four of which hold a length in seven bits each),
// or at 0.
std::int64_t GetStreamStart(std::ifstream& ioFile)
{
	std::array<char, 10> bytes{};
	ioFile.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
	if (!ioFile || std::memcmp(bytes.data(), "ID3", 3) != 0)
	{
		return 0;
	}
	std::int64_t length = 0;
	for (std::size_t i = 6; i < 10; ++i)
	{
		length = length << 7 | (bytes[i] & 0x7f);
	}
	bool const hasFooter = (bytes[5] & 0x10) != 0;
	return 10 + length + (hasFooter ? 10 : 0);
}

} // namespace

std::optional<MpegLengthTag> ReadMpegLengthTag(std::filesystem::path const& inPath)
{
	std::ifstream file(inPath, std::ios::binary);
	MpegLengthTag tag;
	tag.mFirstFrame = GetStreamStart(file);
	CheckRead(file, inPath);
	file.clear();
	file.seekg(tag.mFirstFrame);

	// Long enough for every place at which a tag may stand.
	std::array<std::uint8_t, 64> start{};
	file.read(reinterpret_cast<char*>(start.data()), static_cast<std::streamsize>(start.size()));
	CheckRead(file, inPath);
	FrameHeader const header{start[0], start[1], start[2], start[3]};
	if (file.gcount() < 4 || !IsFrameHeader(header))
	{
		return std::nullopt;
	}
	if (!IsLayer3(header))
	{
		return tag;
	}

	std::uint8_t const* const xing = start.data() + (HasChecksum(header) ? 6 : 4) + GetSideInfoSize(header);
	// The other kind of tag always stands where the longest side information would end.
	std::uint8_t const* const vbri = start.data() + 36;
	if (std::memcmp(xing, "Xing", 4) == 0 || std::memcmp(xing, "Info", 4) == 0)
	{
		// Bits of the flags: a count of frames, a count of bytes.
		std::uint32_t const flags = ReadBigEndian32(xing + 4);
		tag.mIsUsable = (flags & 1) != 0;
		if ((flags & 3) == 3)
		{
			tag.mBytes = ReadBigEndian32(xing + 12);
		}
	}
	else if (std::memcmp(vbri, "VBRI", 4) == 0)
	{
		tag.mBytes = ReadBigEndian32(vbri + 10);
	}
	return tag;
}

} // namespace SonaroHost
