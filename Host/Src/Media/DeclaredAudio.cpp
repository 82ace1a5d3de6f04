#include "DeclaredAudio.h"

#include "SonaroHost/Files/WholeFile.h"

#include <algorithm>
#include <fstream>
#include <string>
#include <string_view>

namespace SonaroHost
{

namespace
{

enum class ByteOrder
{
	kLittle,
	kBig
};

// Reads the fields of a header. Whatever lies beyond the end reads as zeros.
class HeaderFile
{
public:
	explicit HeaderFile(std::filesystem::path const& inPath)
		: mPath(inPath),
		  mFile(inPath, std::ios::binary),
		  mLength(GetFileLength(inPath))
	{
	}

	std::int64_t GetLength() const { return mLength; }

	std::string GetText(std::int64_t inOffset, std::size_t inLength)
	{
		std::string text(inLength, '\0');
		mFile.clear();
		mFile.seekg(inOffset);
		mFile.read(text.data(), static_cast<std::streamsize>(inLength));
		CheckRead(mFile, mPath);
		return text;
	}

	std::uint64_t GetNumber(std::int64_t inOffset, std::size_t inBytes, ByteOrder inOrder)
	{
		std::string bytes = GetText(inOffset, inBytes);
		if (inOrder == ByteOrder::kLittle)
		{
			std::ranges::reverse(bytes);
		}
		std::uint64_t value = 0;
		for (char const byte : bytes)
		{
			value = value << 8 | static_cast<unsigned char>(byte);
		}
		return value;
	}

private:
	std::filesystem::path mPath;
	std::ifstream mFile;
	std::int64_t mLength;
};

// What streaming writers put where the length belongs: all ones, or nearly the largest signed number.
bool IsPlaceholder(std::uint64_t inSize)
{
	return inSize >= 0xfffff000 || (inSize >= 0x7fffe000 && inSize <= 0x80000000);
}

bool IsChunkName(std::string_view inText)
{
	return std::ranges::all_of(
		inText, [](char inCharacter) { return inCharacter >= ' ' && inCharacter <= '~'; });
}

// WAV (little endian, rarely big), its 64-bit forms RF64 and BW64, and AIFF (big endian): chunks of a
// name, 32 bits of length and a content padded to an even length.
std::optional<DeclaredAudio> ReadChunks(HeaderFile& ioFile, ByteOrder inOrder, std::string_view inAudioChunk)
{
	constexpr std::int64_t kChunkHeader = 8;
	std::optional<std::uint64_t> longSize;
	for (std::int64_t offset = 12; offset + kChunkHeader <= ioFile.GetLength();)
	{
		std::string const name = ioFile.GetText(offset, 4);
		std::uint64_t size = ioFile.GetNumber(offset + 4, 4, inOrder);
		std::int64_t const content = offset + kChunkHeader;
		if (name == "ds64")
		{
			longSize = ioFile.GetNumber(content + 8, 8, inOrder);
		}
		else if (name == inAudioChunk)
		{
			DeclaredAudio audio{content, std::nullopt, false};
			if (longSize && size == 0xffffffff)
			{
				audio.mBytes = static_cast<std::int64_t>(*longSize);
			}
			else if (!IsPlaceholder(size))
			{
				audio.mBytes = static_cast<std::int64_t>(size);
				audio.mIsUnfinished = size == 0 && content + kChunkHeader <= ioFile.GetLength() &&
									  !IsChunkName(ioFile.GetText(content, 4));
			}
			return audio;
		}
		offset = content + static_cast<std::int64_t>(size + (size & 1));
	}
	return std::nullopt;
}

// The 64-bit WAV that starts with a small "riff": chunks of a 16-byte name and 64 bits of length that count the 24
// bytes of the header, padded to eight.
std::optional<DeclaredAudio> ReadWave64(HeaderFile& ioFile)
{
	constexpr std::int64_t kChunkHeader = 24;
	for (std::int64_t offset = 40; offset + kChunkHeader <= ioFile.GetLength();)
	{
		auto const size = static_cast<std::int64_t>(ioFile.GetNumber(offset + 16, 8, ByteOrder::kLittle));
		if (size < kChunkHeader || size > (std::int64_t{1} << 60))
		{
			return std::nullopt;
		}
		if (ioFile.GetText(offset, 4) == "data")
		{
			return DeclaredAudio{offset + kChunkHeader, size - kChunkHeader, false};
		}
		offset += (size + 7) / 8 * 8;
	}
	return std::nullopt;
}

// CAF (big endian): a header of eight bytes, then chunks of a name and 64 bits of length. The sound of a recording that
// goes on has the length -1.
std::optional<DeclaredAudio> ReadCoreAudio(HeaderFile& ioFile)
{
	constexpr std::int64_t kChunkHeader = 12;
	for (std::int64_t offset = 8; offset + kChunkHeader <= ioFile.GetLength();)
	{
		std::uint64_t const size = ioFile.GetNumber(offset + 4, 8, ByteOrder::kBig);
		bool const isOpen = size > (std::uint64_t{1} << 60);
		std::int64_t const content = offset + kChunkHeader;
		if (ioFile.GetText(offset, 4) == "data")
		{
			return DeclaredAudio{
				content, isOpen ? std::nullopt : std::optional(static_cast<std::int64_t>(size)), false};
		}
		if (isOpen)
		{
			break;
		}
		offset = content + static_cast<std::int64_t>(size);
	}
	return std::nullopt;
}

std::optional<DeclaredAudio> ReadSunAudio(HeaderFile& ioFile, ByteOrder inOrder)
{
	DeclaredAudio audio{static_cast<std::int64_t>(ioFile.GetNumber(4, 4, inOrder)), std::nullopt, false};
	std::uint64_t const size = ioFile.GetNumber(8, 4, inOrder);
	if (!IsPlaceholder(size))
	{
		audio.mBytes = static_cast<std::int64_t>(size);
	}
	return audio;
}

} // namespace

std::optional<DeclaredAudio> ReadDeclaredAudio(std::filesystem::path const& inPath)
{
	HeaderFile file(inPath);
	std::string const name = file.GetText(0, 4);
	if (name == "RIFF" || name == "RF64" || name == "BW64")
	{
		return ReadChunks(file, ByteOrder::kLittle, "data");
	}
	if (name == "RIFX")
	{
		return ReadChunks(file, ByteOrder::kBig, "data");
	}
	if (name == "FORM" && file.GetText(8, 3) == "AIF")
	{
		return ReadChunks(file, ByteOrder::kBig, "SSND");
	}
	if (name == "riff")
	{
		return ReadWave64(file);
	}
	if (name == "caff")
	{
		return ReadCoreAudio(file);
	}
	if (name == ".snd" || name == "dns.")
	{
		return ReadSunAudio(file, name == ".snd" ? ByteOrder::kBig : ByteOrder::kLittle);
	}
	return std::nullopt;
}

} // namespace SonaroHost
