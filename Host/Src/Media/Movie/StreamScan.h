#pragma once

#include "MovieIndex.h"
#include "MovieStream.h"
#include "Packet/PacketPlacer.h"

#include <cstddef>
#include <cstdint>
#include <deque>

namespace SonaroHost
{

class MovieInput;

// One stream of a movie while it is looked through: notes in its plan where its samples lie.
class StreamScan
{
public:
	// Both have to outlive it.
	StreamScan(MovieInput const& inInput, MovieIndex::Stream& ioPlan, MediaDamage& ioDamage);

	// Null at the end.
	void Take(AVPacket const* inPacket);

	PacketPlacer const& GetPlacer() const { return mStream.GetPlacer(); }
	MovieIndex::Stream& GetPlan() { return mPlan; }
	// Whether there are packets, and none of them can be decoded.
	bool IsUnreadable() const { return mIsAnyDamaged && !mIsAnyWhole; }

private:
	void TakeLoose(AVPacket const* inPacket);
	void PlaceFirst();
	void Note(MovieStream::Piece const& inPiece);

	MovieStream mStream;
	MovieIndex::Stream& mPlan;
	MediaDamage& mDamage;
	int mSampleRate;
	std::int64_t mPackets = 0;
	// Packets at which decoding can begin.
	std::int64_t mEnterable = 0;
	bool mIsAnyDamaged = false;
	bool mIsAnyWhole = false;
	bool mIsAfterDamage = false;
	// Packets that are not placed yet.
	std::deque<PacketPlacer::Content> mFollowing;
	std::deque<bool> mIsFollowingDamaged;
	std::int64_t mFollowingSamples = 0;
};

} // namespace SonaroHost
