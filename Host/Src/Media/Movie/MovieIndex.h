#pragma once

#include "Packet/PacketTimes.h"
#include "SonaroHost/Media/MediaDamage.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace SonaroHost
{

// Whether libavformat applies edit lists.
enum class MovieEdits
{
	kFollowed,
	kIgnored,
};

// Where the samples of a movie's audio streams lie, as reading all of its packets once has shown.
struct MovieIndex
{
	// Positions of samples, sample 0 being the movie's first.
	struct Run
	{
		std::int64_t mFirst = 0;
		std::int64_t mEnd = 0;
	};

	// A packet at which decoding can begin.
	struct Entry
	{
		// Where the packet before ended, and what is added to timestamps there.
		std::int64_t mNext = 0;
		std::int64_t mShift = 0;
		// What the packet is known by.
		std::int64_t mTimestamp = 0;
		std::int64_t mByte = 0;
	};

	// A packet of loose times that does not go on where the last one ended, by its number.
	struct Jump
	{
		std::int64_t mPacket = 0;
		std::int64_t mPosition = 0;
	};

	struct Stream
	{
		// Of all streams of the file, and where its channels stand among those that are read.
		unsigned mIndex = 0;
		unsigned mFirstChannel = 0;
		unsigned mChannels = 0;
		PacketTimes mTimes = PacketTimes::kLoose;
		// Samples of each packet; 0 where the packets themselves say.
		int mPacketSamples = 0;
		// Whether packets say how many samples they hold, so that they need not be decoded to find out.
		bool mIsCounted = false;
		// The end of what is presented.
		std::int64_t mEnd = 0;
		// All that is not silence, in order.
		std::vector<Run> mRuns;
		// In order; of streams with loose times, which are always decoded from their start.
		std::vector<Jump> mJumps;
		// In order; empty unless all streams can be entered anywhere.
		std::vector<Entry> mEntries;
	};

	// A part of a stream's media that an edit list presents.
	struct Segment
	{
		std::int64_t mFirst = 0;
		std::int64_t mEnd = 0;
		// Where in the media it begins.
		std::int64_t mMedia = 0;
	};

	// A stream with an edit list of several segments: its media as they are without it.
	struct Edited
	{
		std::shared_ptr<MovieIndex const> mMedia;
		std::shared_ptr<MediaDamage> mDamage;
		unsigned mFirstChannel = 0;
		// In order.
		std::vector<Segment> mSegments;
	};

	std::vector<Stream> mStreams;
	// All streams, in place of mStreams, where one of them has several segments.
	std::vector<Edited> mEdited;
	int mSampleRate = 0;
	unsigned mChannels = 0;
	std::int64_t mFrames = 0;
	// Whether samples are the same after a seek.
	bool mIsSeekExact = false;
	MovieEdits mEdits = MovieEdits::kFollowed;
};

} // namespace SonaroHost
