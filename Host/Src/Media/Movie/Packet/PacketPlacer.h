#pragma once

#include "LibavPointers.h"
#include "PacketTimes.h"

#include <cstdint>

namespace SonaroHost
{

// Turns the timestamps of an audio stream's packets into positions of samples, sample 0 being the movie's first.
//
// Method  A packet goes on where the last one ended, unless its timestamp is further away than timestamps of its kind
//         are rounded: then there is a gap, or an overlap, whose second half is dropped. Times that jump far, as
//         where two broadcasts meet, count from there on. Samples that the container marks as the encoder's delay or
//         padding, or as outside of all edits, are dropped.
class PacketPlacer
{
public:
	// What of a packet is presented.
	struct Place
	{
		std::int64_t mPosition = 0;
		// Samples that are dropped at its start, and then those that are kept.
		std::int64_t mSkipped = 0;
		std::int64_t mCount = 0;
	};

	// inStart: the movie's start in units of AV_TIME_BASE.
	PacketPlacer(AVStream const& inStream, int inSampleRate, PacketTimes inTimes, std::int64_t inStart);

	// inSamples: how many the packet holds.
	Place PlaceNext(AVPacket const& inPacket, std::int64_t inSamples);
	// Samples that come out when no packets are left.
	Place PlaceRest(std::int64_t inSamples);

	// Where the next packet goes on; 0 before the first one.
	std::int64_t GetNext() const { return mNext; }
	// Whether all that is to be skipped at the start has been.
	bool IsAfterDelay() const { return mHasStarted && mSkip == 0; }
	// What is added to timestamps after a jump.
	std::int64_t GetShift() const { return mShift; }
	// Goes on as it was between two packets, with what these two returned there, once the delay was skipped.
	void GoOnAt(std::int64_t inNext, std::int64_t inShift);

	// The position of a time of the stream.
	std::int64_t ToPosition(std::int64_t inTimestamp) const;

private:
	Place Trim(std::int64_t inStart, std::int64_t inSamples);

	AVRational mTimeBase;
	int mSampleRate;
	std::int64_t mStart;
	std::int64_t mTolerance;
	std::int64_t mNext = 0;
	std::int64_t mShift = 0;
	std::int64_t mSkip = 0;
	bool mHasStarted = false;
};

} // namespace SonaroHost
