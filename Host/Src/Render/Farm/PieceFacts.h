#pragma once

#include "SonaroHost/Base/ProgrammeRange.h"
#include "SonaroHost/Media/MediaDamage.h"
#include "SonaroHost/Offline/LearnedNoise.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace SonaroHost::Farm
{

// What stands in the file of a piece.
//
// File      An RF64, so that any program can hear it: what the graph gave, as floats, before fades, gains and limiters.
// "snrt"    A chunk after the samples: what the meters of tracks heard, as records of HeardRecord, each with the
//           samples of its channels that are not silent, one channel after the other.
// "snrp"    The last chunk: a digest of the rest, 32 digits and a line end, and then these facts as JSON.
// Segments  Samples and records come in segments, each with digests of its own, which are read one at a time.
struct PieceFacts
{
	struct Segment
	{
		std::int64_t mFrames = 0;
		std::string mDigest;
		// Of the records.
		std::int64_t mHeardBytes = 0;
		std::string mHeardDigest;
	};

	// The identity of the plan, and which of its pieces this is, from 1 on.
	std::string mPlan;
	std::size_t mNumber = 0;
	ProgrammeRange mRange;
	int mSampleRate = 0;
	unsigned mChannels = 0;
	unsigned mBlockFrames = 0;
	// The origins of the tracks that were heard; records name them by their index.
	std::vector<std::string> mTaps;
	std::vector<Segment> mSegments;
	// What the render reports of media.
	std::vector<DamagedMedia> mDamaged;
	std::vector<LearnedNoise> mLearnedNoise;
	// Where the first sample and the first record stand in the file.
	std::int64_t mSamplesStart = 0;
	std::int64_t mHeardStart = 0;
};

// What a meter heard at once.
struct HeardRecord
{
	std::int64_t mTicks = 0;
	// A bit for each channel that is silent and has no samples.
	std::uint64_t mSilent = 0;
	std::uint32_t mTap = 0;
	std::uint32_t mChannels = 0;
	std::uint32_t mFrames = 0;
	std::uint32_t mUnused = 0;
};

inline constexpr char kHeardChunk[] = "snrt";
inline constexpr char kFactsChunk[] = "snrp";

} // namespace SonaroHost::Farm
