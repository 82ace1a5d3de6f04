#pragma once

#include "Sonaro/IAsyncAudioSource.h"
#include "Sonaro/IAudioSource.h"
#include "Sonaro/IAudioSourceFile.h"
#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Media/AudioFileReader.h"
#include "Vexilon/AudioMapEntry.h"
#include "Vexilon/MediaVector.h"

#include <atomic>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>

namespace SonaroHost
{

// A sound file as a source for the engine, read as it is needed or ahead of the render.
//
// Channels  In the order of the layout: a 5.1 file whose channels stand otherwise is put in order.
// Ahead     What was prefetched waits in chunks, the reader's blocks, which the media manager takes away
//           again when memory runs short. What is not there when it is read is silence and a miss.
// Errors    A read cannot report one: where the file cannot be decoded it gives silence from then on, and
//           GetFailure says why. Whoever renders asks after each block.
// Threads   Any. ReadPrefetchedAudio, GetFailure before there is one, and the counts of misses neither
//           wait, lock nor allocate; ReadAudio and PrefetchAudioData decode one at a time.
class AudioFileSource final
	: public SN::Implements<AudioFileSource, SN::IAudioSource, SN::IAudioSourceFile, SN::IAsyncAudioSource>
{
public:
	static constexpr SN::Identifier<AudioFileSource> kIdentifier{
		0xd16a24bb9fd1a84cull, 0x2f0c94a3c3d70a95ull};

	// Throws a HostError when the file cannot be opened. inCountingRate: see the constructor;
	// inStream: see InspectAudioFile.
	static SN::InterfaceRef<AudioFileSource> Open(std::filesystem::path const& inPath,
		std::optional<SN::FrameRate> const& inCountingRate = std::nullopt, unsigned inStream = 0);
	// The same of a file that was inspected.
	static SN::InterfaceRef<AudioFileSource> Open(
		AudioFileInfo const& inInfo, std::optional<SN::FrameRate> const& inCountingRate = std::nullopt);

	// Sample k stands at k frames of inCountingRate, for which the file's own rate serves where it is left
	// away. Nothing is resampled.
	explicit AudioFileSource(std::unique_ptr<AudioFileReader> inReader,
		std::optional<SN::FrameRate> const& inCountingRate = std::nullopt);

	// Counts by another rate from now on. Called before anybody reads.
	void SetCountingRate(SN::FrameRate const& inRate) { mFrameRate = inRate; }

	AudioFileInfo const& GetInfo() const { return mReader->GetInfo(); }
	// The error that stopped reading.
	std::optional<HostError> GetFailure() const;

	// How often a read went without a chunk, and how many frames were silent because of it.
	std::uint64_t GetMissCount() const { return mMissCount.load(std::memory_order_relaxed); }
	std::uint64_t GetMissedFrames() const { return mMissedFrames.load(std::memory_order_relaxed); }

	SN::FrameRate GetFrameRate() override { return mFrameRate; }
	SN::TickTime GetLength() override
	{
		return SN::TickTime(GetInfo().mFramesBefore + GetInfo().mFrames, mFrameRate);
	}
	unsigned GetNumChannels() SONARO_NONBLOCKING override { return GetInfo().GetNumChannels(); }
	SN::AudioChannelLayout GetAudioChannelLayout() override { return GetInfo().mLayout; }
	SN::ImmutableString GetName() override { return mName; }
	void ReadAudio(VX::BinaryData const& inOptions, dsp::AudioBuffer& inBuffer, SN::TickTime const& inTime,
		bool inFlag) override;

	bool IsGrowing() SONARO_NONBLOCKING override { return false; }
	SN::ImmutableString GetPath() override { return mPath; }
	unsigned GetRevision() override { return 0; }
	SN::TickTime GetDuration() SONARO_NONBLOCKING override { return GetLength(); }

	// What of the range lies before the start or beyond the end of the file is left out.
	void PrefetchAudioData(
		unsigned long long const& inTimeStamp, SN::TickTime const& inTime, unsigned inNumSamples) override;
	int ReadPrefetchedAudio(
		SN::TickTime const& inTime, dsp::AudioBuffer& inBuffer) SONARO_NONBLOCKING override;
	int GetPrefetchState() override { return SN::eNotImplemented; }

private:
	using Chunks = VX::MediaVector<VX::AudioMapEntry>;

	// The part of a buffer that lies within the file: samples mFirst to mEnd of the buffer, at mPosition in
	// the file.
	struct Part
	{
		std::int64_t mPosition = 0;
		unsigned mFirst = 0;
		unsigned mEnd = 0;
	};

	// A stretch of the file within one chunk.
	struct Piece
	{
		std::int64_t mChunk = 0;
		unsigned mOffset = 0;
		unsigned mFrames = 0;
	};

	Part FindPart(SN::TickTime const& inTime, std::int64_t inFrames) const;
	// The stretch from inPosition on, at most inFrames long.
	Piece FindPiece(std::int64_t inPosition, std::int64_t inFrames) const;
	// Declares the part written, writes silence around it, and flags channels that the file lacks.
	void FinishBuffer(dsp::AudioBuffer& ioBuffer, Part const& inPart) const;

	// Waits for other decoders, but takes no lock when there is none.
	std::unique_lock<std::mutex> LockReader();
	// Called under the lock. Copies frames of one chunk to inTarget in the buffer.
	void Decode(Piece const& inPiece, dsp::AudioBuffer& ioBuffer, unsigned inTarget);
	// Called under the lock. Throws what decoding throws.
	void DecodeChunk(std::int64_t inChunk);
	bool HasFailed() const { return mHasFailed.load(std::memory_order_acquire); }
	// Called under the lock.
	void Fail(std::exception const& inReason);

	// The reader's state, and what is written once before mHasFailed says so.
	std::mutex mReading;
	std::unique_ptr<AudioFileReader> mReader;
	std::optional<HostError> mFailure;
	std::atomic<bool> mHasFailed{false};

	SN::InterfaceRef<Chunks> mChunks;
	std::atomic<std::uint64_t> mMissCount{0};
	std::atomic<std::uint64_t> mMissedFrames{0};

	SN::FrameRate mFrameRate;
	SN::ImmutableString mName;
	SN::ImmutableString mPath;
};

} // namespace SonaroHost
