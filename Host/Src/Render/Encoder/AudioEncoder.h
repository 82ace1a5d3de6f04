#pragma once

#include "SonaroHost/Base/OutputFormat.h"
#include "SonaroHost/Metering/SampleQuantizer.h"
#include "zorvmediatypes/AudioChannelDescription.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

namespace dsp
{
class AudioBuffer;
}

namespace SonaroHost
{

// Where an encoder puts its bytes. The functions are like those of <cstdio>.
class EncoderTarget
{
public:
	virtual ~EncoderTarget() = default;

	virtual std::int64_t Write(void const* inBytes, std::int64_t inCount) = 0;
	virtual std::int64_t Read(void* outBytes, std::int64_t inCount) = 0;
	virtual std::int64_t Seek(std::int64_t inOffset, int inOrigin) = 0;
	virtual std::int64_t Tell() = 0;
	virtual std::int64_t GetLength() = 0;
	// Throws a HostError when an operation has failed.
	virtual void CheckWritten() = 0;
};

// What a sound file has that is written or served.
struct EncoderFormat
{
	OutputFormat mFormat;
	int mSampleRate = 0;
	zorvmediatypes::AudioChannelLayout mLayout;
	// How many there will be.
	std::int64_t mFrames = 0;
	// See AudioFileWriter.
	std::optional<std::int64_t> mTimeReference;
	// Where the samples begin in a longer sound, whose dither they have.
	std::int64_t mFirstFrame = 0;
};

// How the channels of a layout stand in a frame of a file.
struct FramePlaces
{
	// The channel of the layout at each place, and its gain; none where nothing is to be changed.
	std::vector<unsigned> mOrder;
	std::vector<float> mGains;

	unsigned GetChannel(unsigned inPlace) const { return mOrder.empty() ? inPlace : mOrder[inPlace]; }
	float GetGain(unsigned inPlace) const { return mGains.empty() ? 1.0f : mGains[inPlace]; }
};

FramePlaces FindFramePlaces(EncoderFormat const& inFormat);

// Throws a HostError, which calls the target inPath, for what no file of the format's kind can hold.
void CheckFormat(std::filesystem::path const& inPath, EncoderFormat const& inFormat);

// Makes a sound file of samples, as AudioFileWriter says.
class AudioEncoder
{
public:
	// inPath: what messages call the target, which outlives this. Throws a HostError.
	AudioEncoder(EncoderTarget& ioTarget, std::filesystem::path const& inPath, EncoderFormat const& inFormat);
	~AudioEncoder();

	// Writes what stands before the samples, which the first of them does otherwise.
	void WriteHeader();
	void Write(dsp::AudioBuffer const& inBuffer);
	// Adds as many bytes of uncompressed samples, in whole frames.
	void WriteBytes(void const* inBytes, std::int64_t inCount);
	// Writes the header and what is still held. Once.
	void Complete();

	std::int64_t GetFrames() const { return mFrames; }
	std::int64_t GetClippedSamples() const;

private:
	struct Handle;

	void WritePiece(dsp::AudioBuffer const& inBuffer, unsigned inFirst, unsigned inFrames);
	[[noreturn]] void RefuseFailure(char const* inWhat, char const* inReason) const;

	EncoderTarget& mTarget;
	std::filesystem::path mPath;
	unsigned mChannels;
	std::int64_t mFrames = 0;
	std::unique_ptr<Handle> mHandle;
	// One for each channel; none for floats.
	std::vector<SampleQuantizer> mQuantizers;
	int mIntegerShift = 0;
	FramePlaces mPlaces;
	std::vector<int> mIntegers;
	std::vector<float> mFloats;
};

} // namespace SonaroHost
