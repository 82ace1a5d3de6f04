#pragma once

#include "Files/SystemFiles.h"
#include "MovieIndex.h"
#include "Packet/Libav.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

namespace SonaroHost
{

// A container of sound, with or without pictures, as libavformat reads it: from the one file alone, by the demuxers of a
// list of ours. Nothing that the file names is opened.
//
// Threads  One at a time.
class MovieInput
{
public:
	// Throws a HostError when the file is a container that cannot be read, and a NoSoundError when it is none.
	explicit MovieInput(std::filesystem::path const& inPath, MovieEdits inEdits = MovieEdits::kFollowed);
	~MovieInput();
	MovieInput(MovieInput const&) = delete;
	MovieInput& operator=(MovieInput const&) = delete;

	MovieEdits GetEdits() const { return mEdits; }
	AVFormatContext const& GetFormat() const { return *mFormat; }
	AVStream const& GetStream(unsigned inIndex) const { return *mFormat->streams[inIndex]; }
	std::vector<unsigned> const& GetAudioStreams() const { return mAudioStreams; }

	// The name of the demuxer begins so, as "mov" of "mov,mp4,m4a,3gp,3g2,mj2".
	bool IsRead(char const* inDemuxer) const;
	// The movie's start in units of AV_TIME_BASE: 0 where the container's clock starts there, otherwise the first time of
	// all its streams. Times that begin before what a tag of iTunes (iTunSMPB) presents count from there.
	std::int64_t GetStart() const;
	// How many samples that tag presents of the only stream of an MP4 file, between the encoder's delay and its padding.
	// Nothing without the tag, and where an edit list says what is presented.
	std::optional<std::int64_t> FindTaggedLength() const;

	// Only these streams come from ReadPacket; the demuxer skips others where it can.
	void Choose(std::vector<unsigned> const& inStreams);
	// False at the end. Throws a HostError where the file cannot be read.
	bool ReadPacket(AVPacket& outPacket);
	// To the last packet of the stream at the timestamp or before it, or earlier.
	bool SeekTo(unsigned inStream, std::int64_t inTimestamp);

private:
	static int Read(void* inSelf, std::uint8_t* outBytes, int inCount);
	static std::int64_t Seek(void* inSelf, std::int64_t inOffset, int inOrigin);
	AVInputFormat const* Recognise(std::filesystem::path const& inPath);
	void Open(std::filesystem::path const& inPath, AVInputFormat const* inDemuxer);
	// Throws where libav ended with such an error for want of memory, or of what is in the file.
	void CheckRead(int inError) const;

	std::filesystem::path mPath;
	MovieEdits mEdits;
	FileHandle mFile;
	// Why a read failed, a code of the system; 0 while none did.
	int mReadError = 0;
	std::int64_t mLength = 0;
	LibavPointer<AVIOContext> mBytes;
	LibavPointer<AVFormatContext> mFormat;
	std::vector<unsigned> mAudioStreams;
};

} // namespace SonaroHost
