#pragma once

#include "MovieIndex.h"
#include "Packet/PacketDecoder.h"
#include "Packet/PacketPlacer.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>

namespace SonaroHost
{

class MovieInput;

// One audio stream of a movie: its packets as placed samples. What looks through a movie and what decodes it both
// place packets by this, so that they agree.
class MovieStream
{
public:
	enum class Work
	{
		// Packets that say their length are not decoded, and jumps of loose times are looked for.
		kPlace,
		// Such jumps are those of the plan.
		kDecode,
	};

	// Throws a std::runtime_error where there is no decoder.
	MovieStream(MovieInput const& inInput, MovieIndex::Stream const& inPlan, int inSampleRate, Work inWork);

	// What a packet presents.
	struct Piece
	{
		std::int64_t mPosition = 0;
		std::int64_t mCount = 0;
		// Interleaved, valid until the next packet; null for silence and where nothing was decoded.
		float const* mSamples = nullptr;
		bool mIsDamaged = false;
	};
	// Null for what is left at the end.
	Piece Take(AVPacket const* inPacket);

	// The same in two steps, for a packet that is placed when those that follow are known.
	struct Measured
	{
		PacketPlacer::Content mContent;
		bool mIsDamaged = false;
	};
	Measured Measure(AVPacket const& inPacket);
	Piece Place(Measured const& inMeasured, std::optional<std::int64_t> inJump);
	std::optional<std::int64_t> FindJump(
		Measured const& inMeasured, std::deque<PacketPlacer::Content> const& inFollowing)
	{
		return mPlacer.FindJump(inMeasured.mContent, inFollowing);
	}

	PacketPlacer const& GetPlacer() const { return mPlacer; }
	// Goes on after a seek, before the packet of the entry.
	void GoOnAt(MovieIndex::Entry const& inEntry);

private:
	std::optional<std::int64_t> FindJumpOfPlan();
	Piece Cut(PacketPlacer::Place const& inPlace, bool inIsDamaged) const;
	// Nothing where the packet does not say it.
	std::optional<std::int64_t> CountSamples(AVPacket const& inPacket) const;
	std::int64_t GuessSamples(AVPacket const& inPacket) const;

	MovieIndex::Stream mPlan;
	int mSampleRate;
	Work mWork;
	AVStream const& mStream;
	PacketPlacer mPlacer;
	// Null where packets were only placed so far.
	std::unique_ptr<PacketDecoder> mDecoder;
	// Of the last packet.
	PacketDecoder::Result mDecoded;
	// Samples of the last packet that was in order.
	std::int64_t mLastSamples = 0;
	std::int64_t mPackets = 0;
	std::size_t mJump = 0;
};

} // namespace SonaroHost
