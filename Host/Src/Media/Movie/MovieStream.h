#pragma once

#include "MovieIndex.h"
#include "Packet/PacketDecoder.h"
#include "Packet/PacketPlacer.h"

#include <cstdint>
#include <memory>

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
		// Packets that say their length are not decoded.
		kPlace,
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

	PacketPlacer const& GetPlacer() const { return mPlacer; }
	// Goes on after a seek, before the packet of the entry.
	void GoOnAt(MovieIndex::Entry const& inEntry);

private:
	std::int64_t CountSamples(AVPacket const& inPacket) const;
	std::int64_t GuessSamples(AVPacket const& inPacket) const;

	MovieIndex::Stream mPlan;
	int mSampleRate;
	AVCodecParameters* mParameters;
	AVRational mTimeBase;
	PacketPlacer mPlacer;
	// Null where packets are only placed.
	std::unique_ptr<PacketDecoder> mDecoder;
};

} // namespace SonaroHost
