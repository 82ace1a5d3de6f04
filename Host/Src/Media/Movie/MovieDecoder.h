#pragma once

#include "Media/SoundDecoder.h"
#include "MovieIndex.h"
#include "Packet/Libav.h"
#include "Packet/PlacedSamples.h"
#include "SonaroHost/Media/MediaDamage.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <vector>

namespace SonaroHost
{

class MovieInput;
class MovieStream;

// One pass of libav over a movie: the channels of its audio streams one after the other, each where its timestamps say,
// with silence where there is nothing and where packets are damaged.
class MovieDecoder final : public SoundDecoder
{
public:
	// Throws a HostError when the file cannot be opened any more.
	MovieDecoder(std::filesystem::path inPath, std::shared_ptr<MovieIndex const> inIndex,
		std::shared_ptr<MediaDamage> inDamage);
	~MovieDecoder() override;

	unsigned GetNumChannels() const noexcept override { return mIndex->mChannels; }
	bool IsSeekExact() const noexcept override { return mIndex->mIsSeekExact; }
	std::int64_t GetPosition() const noexcept override { return mPosition; }
	std::int64_t Read(float* outSamples, std::int64_t inFrames) override;
	bool SeekTo(std::int64_t inFrame) override;

private:
	// One stream, and what of it waits to be read.
	struct Lane;

	// From the file's start on.
	void Open();
	// Reads one packet and, at the end, what is left in the decoders. False when there was none.
	bool ReadOn();
	void Take(Lane& ioLane, AVPacket const* inPacket);
	bool IsReady(Lane& ioLane, std::int64_t inEnd) const;
	// Jumps inBack entries before the last ones at the frame or before it. False when there are no such ones, or when
	// they are not found again.
	bool JumpBefore(std::int64_t inFrame, std::size_t inBack);
	// Whether it goes on from the packet; sets whether that lies too late.
	bool Enter(Lane& ioLane, AVPacket const& inPacket);
	void CheckWaiting() const;

	std::filesystem::path mPath;
	std::shared_ptr<MovieIndex const> mIndex;
	std::shared_ptr<MediaDamage> mDamage;
	std::unique_ptr<MovieInput> mInput;
	std::vector<Lane> mLanes;
	LibavPointer<AVPacket> mPacket;
	std::int64_t mPosition = 0;
	bool mIsAtEnd = false;
	bool mIsTooLate = false;
};

} // namespace SonaroHost
