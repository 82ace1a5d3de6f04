#include "PieceFile.h"

#include "FactsText.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Files/Digest.h"
#include "SonaroHost/Files/WholeFile.h"
#include "zorvaudiodsp/AudioBuffer.h"
#include "zorvaudiodsp/AudioBufferShell.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <string>
#include <system_error>
#include <utility>

namespace SonaroHost::Farm
{

namespace
{

// Places in the header that a PieceFileWriter writes.
constexpr std::int64_t kHeaderBytes = 92;
constexpr std::int64_t kFileSizePlace = 20;
constexpr std::int64_t kSamplesSizePlace = 28;
constexpr std::int64_t kHeardNamePlace = 48;
constexpr std::int64_t kHeardSizePlace = 52;
constexpr std::int64_t kChunkHead = 8;

[[noreturn]] void RefuseDamage(std::filesystem::path const& inPath, std::string const& inHow)
{
	RefuseFile(inPath, "is a piece that is " + inHow, "render it again");
}

template <class T>
T Take(char const* inBytes)
{
	T value;
	std::memcpy(&value, inBytes, sizeof(T));
	return value;
}

std::int64_t FindSize(std::filesystem::path const& inPath)
{
	std::error_code error;
	std::uintmax_t const size = std::filesystem::file_size(inPath, error);
	return error ? 0 : static_cast<std::int64_t>(size);
}

// Samples of all channels in turn, into blocks. Channels of zeros are silent ones.
void FillBlocks(float const* inSamples, std::int64_t inFrames, PieceFacts const& inFacts, Piece& outPiece)
{
	std::size_t const channels = inFacts.mChannels;
	dsp::AudioBuffer block(channels, inFacts.mBlockFrames);
	for (std::int64_t first = 0; first < inFrames; first += inFacts.mBlockFrames)
	{
		auto const count =
			static_cast<unsigned>(std::min<std::int64_t>(inFacts.mBlockFrames, inFrames - first));
		block.SetUseSize(count);
		block.ClearSilenceFlags(dsp::SilenceFlags::All());
		for (std::size_t channel = 0; channel < channels; ++channel)
		{
			float const* source = inSamples + static_cast<std::size_t>(first) * channels + channel;
			float* const target = block.GetChannel(channel);
			std::uint32_t bits = 0;
			for (unsigned i = 0; i < count; ++i, source += channels)
			{
				target[i] = *source;
				bits |= Take<std::uint32_t>(reinterpret_cast<char const*>(source));
			}
			if (bits == 0)
			{
				block.MarkChannelSilent(channel);
			}
		}
		outPiece.BeginBlock();
		outPiece.AddBlock(block);
	}
}

// Hands records on to the piece.
class HeardReader
{
public:
	HeardReader(std::vector<char>& ioBytes, std::filesystem::path const& inPath)
		: mBytes(ioBytes),
		  mPath(inPath)
	{
	}

	void Read(std::vector<std::size_t> const& inTaps, std::size_t inBlockFrames, Piece& outPiece)
	{
		mZeros.assign(inBlockFrames, 0.0f);
		while (mPlace < mBytes.size())
		{
			ReadRecord(inTaps, outPiece);
		}
	}

private:
	char* Skip(std::size_t inCount)
	{
		if (inCount > mBytes.size() - mPlace)
		{
			RefuseDamage(mPath, "damaged");
		}
		mPlace += inCount;
		return mBytes.data() + (mPlace - inCount);
	}

	void ReadRecord(std::vector<std::size_t> const& inTaps, Piece& outPiece)
	{
		auto const record = Take<HeardRecord>(Skip(sizeof(HeardRecord)));
		if (record.mTap >= inTaps.size() || record.mChannels > dsp::AudioBuffer::kMaxChannels)
		{
			RefuseDamage(mPath, "damaged");
		}
		mZeros.resize(std::max<std::size_t>(mZeros.size(), record.mFrames));
		std::array<float*, dsp::AudioBuffer::kMaxChannels> channels{};
		dsp::SilenceFlags flags;
		for (unsigned channel = 0; channel < record.mChannels; ++channel)
		{
			bool const isSilent = (record.mSilent >> channel & 1) != 0;
			flags.Assign(channel, isSilent);
			channels[channel] =
				isSilent ? mZeros.data() : reinterpret_cast<float*>(Skip(record.mFrames * sizeof(float)));
		}
		dsp::AudioBufferShell shell;
		shell.Init(record.mChannels);
		shell.Assign(channels.data(), record.mFrames);
		shell.SetSilenceFlags(flags);
		outPiece.Hear(inTaps[record.mTap], shell, SN::TickTime::FromTicks(record.mTicks));
	}

	std::vector<char>& mBytes;
	std::filesystem::path const& mPath;
	std::size_t mPlace = 0;
	std::vector<float> mZeros;
};

} // namespace

std::optional<PieceFile> PieceFile::Open(std::filesystem::path const& inPath)
{
	errno = 0;
	std::ifstream file(inPath, std::ios::binary);
	if (!file.is_open())
	{
		RefuseFile(inPath, "cannot be read: " + std::generic_category().message(errno));
	}
	std::array<char, kHeaderBytes> header{};
	bool const isPiece = file.read(header.data(), kHeaderBytes) &&
						 std::memcmp(header.data(), "RF64", 4) == 0 &&
						 std::memcmp(header.data() + kHeardNamePlace, kHeardChunk, 4) == 0;
	CheckRead(file, inPath);
	if (!isPiece)
	{
		return std::nullopt;
	}
	std::int64_t const size = FindSize(inPath);
	auto const samples = Take<std::int64_t>(header.data() + kSamplesSizePlace);
	auto const heard = Take<std::int64_t>(header.data() + kHeardSizePlace);
	bool const isWhole = Take<std::int64_t>(header.data() + kFileSizePlace) + kChunkHead == size &&
						 samples >= 0 && samples < size && heard >= 0 && heard < size;
	std::int64_t const place = kHeaderBytes + samples + kChunkHead + heard + kChunkHead;
	if (!isWhole || place > size)
	{
		RefuseDamage(inPath, "not whole");
	}
	std::string text(static_cast<std::size_t>(size - place), ' ');
	file.seekg(place);
	file.read(text.data(), static_cast<std::streamsize>(text.size()));
	CheckRead(file, inPath);
	return PieceFile(inPath, ReadFacts(inPath, text));
}

PieceFile::PieceFile(std::filesystem::path inPath, PieceFacts inFacts)
	: mPath(std::move(inPath)),
	  mFacts(std::move(inFacts))
{
	std::int64_t samples = mFacts.mSamplesStart;
	std::int64_t heard = mFacts.mHeardStart;
	std::int64_t const frameBytes = std::int64_t{mFacts.mChannels} * static_cast<std::int64_t>(sizeof(float));
	for (PieceFacts::Segment const& segment : mFacts.mSegments)
	{
		mSamplesStarts.push_back(samples);
		mHeardStarts.push_back(heard);
		samples += segment.mFrames * frameBytes;
		heard += segment.mHeardBytes;
	}
}

std::vector<char> PieceFile::ReadBytes(
	std::int64_t inStart, std::int64_t inCount, std::string const& inDigest) const
{
	std::vector<char> bytes(static_cast<std::size_t>(inCount));
	std::ifstream file(mPath, std::ios::binary);
	file.seekg(inStart);
	if (!file.read(bytes.data(), inCount))
	{
		RefuseDamage(mPath, "not whole");
	}
	Digest digest;
	digest.Add(bytes.data(), bytes.size());
	if (digest.GetText() != inDigest)
	{
		RefuseDamage(mPath, "damaged");
	}
	return bytes;
}

bool PieceFile::IsUndamaged() const
try
{
	std::int64_t const frameBytes = std::int64_t{mFacts.mChannels} * static_cast<std::int64_t>(sizeof(float));
	for (std::size_t i = 0; i < mFacts.mSegments.size(); ++i)
	{
		PieceFacts::Segment const& segment = mFacts.mSegments[i];
		ReadBytes(mSamplesStarts[i], segment.mFrames * frameBytes, segment.mDigest);
		ReadBytes(mHeardStarts[i], segment.mHeardBytes, segment.mHeardDigest);
	}
	return true;
}
catch (HostError const&)
{
	return false;
}

void PieceFile::Read(std::size_t inSegment, std::vector<std::size_t> const& inTaps, Piece& outPiece) const
{
	PieceFacts::Segment const& segment = mFacts.mSegments[inSegment];
	std::int64_t const frameBytes = std::int64_t{mFacts.mChannels} * static_cast<std::int64_t>(sizeof(float));
	std::vector<char> const samples =
		ReadBytes(mSamplesStarts[inSegment], segment.mFrames * frameBytes, segment.mDigest);
	FillBlocks(reinterpret_cast<float const*>(samples.data()), segment.mFrames, mFacts, outPiece);
	if (!inTaps.empty())
	{
		std::vector<char> heard =
			ReadBytes(mHeardStarts[inSegment], segment.mHeardBytes, segment.mHeardDigest);
		HeardReader(heard, mPath).Read(inTaps, mFacts.mBlockFrames, outPiece);
	}
}

} // namespace SonaroHost::Farm
