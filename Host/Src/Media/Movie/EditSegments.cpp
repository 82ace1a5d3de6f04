#include "EditSegments.h"

#include "Packet/Libav.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>

namespace SonaroHost
{

namespace
{

constexpr std::int64_t kPlainRate = 0x10000;

// Longer than any movie; sums of two such positions do not overflow.
constexpr std::int64_t kLastPosition = std::int64_t{1} << 56;

} // namespace

bool HasSeveralSegments(QuickTimeTrack const& inTrack)
{
	auto const& edits = inTrack.mEdits;
	auto const first = std::ranges::find_if(
		edits, [](QuickTimeTrack::Edit const& inEdit) { return inEdit.mMediaTime >= 0; });
	return edits.end() - first > 1 && inTrack.mMovieClock > 0 && inTrack.mTrackClock > 0;
}

std::vector<MovieIndex::Segment> MakeSegments(
	QuickTimeTrack const& inTrack, int inSampleRate, std::int64_t inMediaFrames)
{
	std::vector<MovieIndex::Segment> segments;
	std::int64_t time = 0;
	std::int64_t position = 0;
	for (QuickTimeTrack::Edit const& edit : inTrack.mEdits)
	{
		time = av_sat_add64(time, edit.mDuration);
		std::int64_t const first = position;
		position = std::clamp<std::int64_t>(
			Libav().av_rescale(time, inSampleRate, inTrack.mMovieClock), first, kLastPosition);
		if (edit.mMediaTime < 0)
		{
			continue;
		}
		if (edit.mRate != kPlainRate)
		{
			throw std::runtime_error("its edit list changes the speed, which is not supported");
		}
		std::int64_t const media = std::clamp<std::int64_t>(
			Libav().av_rescale(edit.mMediaTime, inSampleRate, inTrack.mTrackClock), 0, kLastPosition);
		// Without a length, the last one goes on to the end of the media.
		bool const isOpen = edit.mDuration == 0 && &edit == &inTrack.mEdits.back();
		position = isOpen ? first + std::max<std::int64_t>(inMediaFrames - media, 0) : position;
		if (position > first)
		{
			segments.push_back({first, position, media});
		}
	}
	return segments;
}

} // namespace SonaroHost
