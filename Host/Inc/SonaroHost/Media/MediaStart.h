#pragma once

#include <cstdint>
#include <string>

namespace SonaroHost
{

// The time of day or timecode at which a recording begins, as its file states it.
struct MediaStart
{
	// The time from midnight in units of which mRate / mRateDivisor pass in a second: samples for the time reference of
	// a broadcast WAV file, frames of the picture for timecodes.
	std::int64_t mUnits = 0;
	std::int64_t mRate = 1;
	std::int64_t mRateDivisor = 1;
	// For people: "01:00:00:00 at 25 fps".
	std::string mText;
};

} // namespace SonaroHost
