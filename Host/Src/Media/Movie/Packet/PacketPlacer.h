#pragma once

#include "Libav.h"
#include "PacketTimes.h"

#include <cstdint>
#include <deque>
#include <optional>

namespace SonaroHost
{

// Turns the timestamps of an audio stream's packets into positions of samples, sample 0 being the movie's first.
//
// Method  A packet goes on where the last one ended, unless its timestamp is further away than timestamps of its kind
//         are rounded: then there is a gap, or an overlap, whose second half is dropped. Where single timestamps may be
//         off, this takes those of the packets that follow: what is off once is jitter, and what stays off is a gap.
//         Times that jump far, as where two broadcasts meet, count from there on. Samples that the container marks as
//         the encoder's delay or padding, or as outside of all edits, are dropped.
class PacketPlacer
{
public:
	// What a packet says of its samples.
	struct Content
	{
		// When the first one is presented, or AV_NOPTS_VALUE.
		std::int64_t mTime = AV_NOPTS_VALUE;
		std::int64_t mSamples = 0;
		// Those that are dropped at its start and, of the following packets, too, and at its end.
		std::int64_t mDelay = 0;
		std::int64_t mPadding = 0;
		bool mIsDropped = false;
	};

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
	Content Describe(AVPacket const& inPacket, std::int64_t inSamples) const;
	// Not for loose times.
	Place PlaceNext(Content const& inContent);

	// The same for loose times, in two steps. Where a packet begins that does not go on where the last one ended, by its
	// time and those of at least a quarter of a second after it, unless the stream ends before.
	std::optional<std::int64_t> FindJump(Content const& inContent, std::deque<Content> const& inFollowing);
	Place PlaceNext(Content const& inContent, std::optional<std::int64_t> inJump);

	// Samples that come out when no packets are left.
	Place PlaceRest(std::int64_t inSamples);

	// Where the next packet goes on; 0 before the first one.
	std::int64_t GetNext() const { return mNext; }
	// Whether all that is to be skipped at the start has been.
	bool IsAfterDelay() const { return mHasStarted && mDelay == 0; }
	// What is added to timestamps after a jump.
	std::int64_t GetShift() const { return mShift; }
	// Goes on as it was between two packets, with what these two returned there, once the delay was skipped.
	void GoOnAt(std::int64_t inNext, std::int64_t inShift);

	// The position of a time of the stream.
	std::int64_t ToPosition(std::int64_t inTimestamp) const;

private:
	std::int64_t CountDropped(Content const& inContent) const;
	// The position of the first sample that is kept, by the packet's time.
	std::int64_t GetStated(Content const& inContent, std::int64_t inDropped) const;
	// Whether a packet that is off by so much is of something else; its time and those after it then go on from here.
	bool IsElsewhere(std::int64_t inOff) const;
	bool IsOff(std::int64_t inOff) const;
	Place PlaceFrom(Content const& inContent, std::int64_t inStart);
	Place Trim(std::int64_t inStart, std::int64_t inSamples);

	AVRational mTimeBase;
	int mSampleRate;
	PacketTimes mTimes;
	std::int64_t mStart;
	std::int64_t mTolerance;
	// Whether the decoder keeps the last frame of a packet back until the next one.
	bool mKeepsFrames;
	// Whether the first packet only prepares the decoder, and sound begins at the time of the second one.
	bool mBeginsAtSecond;
	// Whether packets hold parts of frames, and have the time of a frame somewhere in them.
	bool mHoldsParts;
	// The samples of the longest packet of those.
	std::int64_t mLongestPacket = 0;
	std::int64_t mNext = 0;
	std::int64_t mShift = 0;
	std::int64_t mDelay = 0;
	bool mHasStarted = false;
	// Whether one packet was placed, or held back, and no other one.
	bool mIsAtSecond = false;
	bool mWasHeldBack = false;
};

} // namespace SonaroHost
