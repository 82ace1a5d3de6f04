#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace SonaroHost
{

// What the header of a QuickTime or MP4 file says of a sound track and libavformat does not pass on, or not exactly.
struct QuickTimeTrack
{
	// One segment of an edit list.
	struct Edit
	{
		// In units of the movie's clock.
		std::int64_t mDuration = 0;
		// Where it begins, in units of the track's clock; below 0 where nothing is presented.
		std::int64_t mMediaTime = 0;
		// How fast it is presented, 1 being 0x10000.
		std::int64_t mRate = 0;
	};

	// The tag of its channel layout; 0 where it has none. libavformat takes the places of the channels from it, but not
	// the order in which they stand.
	std::uint32_t mChannelTag = 0;
	// Whether its samples are in another file.
	bool mIsElsewhere = false;
	bool mIsEncrypted = false;
	// Units of a second.
	std::int64_t mMovieClock = 0;
	std::int64_t mTrackClock = 0;
	std::vector<Edit> mEdits;
};

// The sound tracks in the order of the file.
std::vector<QuickTimeTrack> ReadQuickTimeTracks(std::filesystem::path const& inPath);

} // namespace SonaroHost
