#pragma once

#include "SonaroHost/Media/AudioFileInfo.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

namespace SonaroHost
{

class DecodedSpool;
class SoundDecoder;

// Reads a sound file, or the sound of a movie, at any position, to the bit what one decode from start to end gives.
//
// Method   Samples come in blocks of a fixed size, the last few of which are kept. Formats that can be
//          entered anywhere (PCM, FLAC, ALAC and block ADPCM) are seeked, early enough for the codec to
//          have its state. The state of the others (Vorbis, Opus, MPEG, AAC, GSM and stream ADPCM), and of what is stretched, depends on
//          all that came before, so they are decoded from the start; once such a file is read backwards,
//          its decoded samples go to a nameless temporary file. Several readers of such a file can share that file, so
//          that all of them together decode once.
// Damage   Packets of movies that cannot be decoded are silence of their length, and stand in GetInfo().mDamage.
// Changes  A file that was replaced or written to since it was inspected is refused, with an error after 16 blocks at
//          most.
// Cost     Reading forward never seeks, and never allocates in seekable formats of sound files.
// Threads  One at a time.
class AudioFileReader
{
public:
	// Opens the file; throws a HostError like InspectAudioFile.
	explicit AudioFileReader(std::filesystem::path const& inPath, unsigned inStream = 0);
	// What readers of one file share; made for blocks of so many frames when it is first asked for.
	using SpoolFinder = std::function<std::shared_ptr<DecodedSpool>(std::int64_t inBlockFrames)>;

	// Opens a file that was inspected, which is not done again. inFindSpool: called where the file has to be decoded from
	// the start; empty for a reader that shares nothing.
	explicit AudioFileReader(AudioFileInfo inInfo, SpoolFinder const& inFindSpool = {});
	~AudioFileReader();
	AudioFileReader(AudioFileReader const&) = delete;
	AudioFileReader& operator=(AudioFileReader const&) = delete;

	AudioFileInfo const& GetInfo() const noexcept { return mInfo; }

	// Frames of a block; all but the last are full.
	std::int64_t GetBlockFrames() const noexcept { return mBlockFrames; }

	// The frames from inIndex * GetBlockFrames() on, interleaved in the file's order, valid until the
	// next call. inIndex lies within the file. Throws a HostError where the file is damaged.
	float const* GetBlock(std::int64_t inIndex);

	// How often decoding did not go on where it had stopped.
	std::uint64_t GetJumpCount() const noexcept { return mJumpCount; }

private:
	struct Block
	{
		std::int64_t mIndex = -1;
		std::uint64_t mLastUse = 0;
		std::vector<float> mSamples;
	};

	Block& ChooseBlockToFill(std::int64_t inIndex);
	void FillBlock(std::int64_t inIndex, float* outSamples);
	std::int64_t ReadFrames(std::int64_t inPosition, float* outSamples, std::int64_t inFrames);
	std::int64_t ReadSeekable(std::int64_t inPosition, float* outSamples, std::int64_t inFrames);
	std::int64_t ReadFromStart(std::int64_t inPosition, float* outSamples, std::int64_t inFrames);
	std::int64_t ReadSpool(std::int64_t inPosition, float* outSamples, std::int64_t inFrames);
	// Where the decoded samples end that were read last, of those before inEnd.
	std::int64_t FindCut(std::int64_t inEnd) const;
	// Decodes up to inPosition, using ioScratch (one block) for what is dropped.
	void DecodeUpTo(std::int64_t inPosition, float* ioScratch);
	[[noreturn]] void ThrowCutShort(std::int64_t inPosition) const;
	void CheckUnchanged() const;

	AudioFileInfo mInfo;
	// Where it can be opened.
	std::filesystem::path mReadablePath;
	// Null while a shared spool serves.
	std::unique_ptr<SoundDecoder> mDecoder;
	std::shared_ptr<DecodedSpool> mSpool;
	bool mSharesSpool = false;
	std::size_t mDamageSeen = 0;
	int mBlocksUnchecked = 0;
	std::int64_t mBlockFrames;
	std::array<Block, 8> mBlocks;
	std::uint64_t mUseCount = 0;
	std::uint64_t mJumpCount = 0;
};

} // namespace SonaroHost
