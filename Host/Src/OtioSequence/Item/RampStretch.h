#pragma once

#include "ItemTiming.h"
#include "OtioSequence/MakerContext.h"

#include <optional>

namespace SonaroHost::Otio
{

// A recording in which a clip's speed changes and its pitch does not: it lasts as long as the clip, and begins a second
// before it where the media do, so that the stretching has begun.
struct RampStretch
{
	Stretch mStretch;
	// The item's time at which the recording begins. It is played backwards where the speeds are below 0.
	Ratio mStart;
	bool mIsBackwards = false;

	// The recording's place at an item's time, in frames.
	Ratio FindPlace(Ratio const& inTime, Ratio const& inRate) const
	{
		return (mIsBackwards ? mStart - inTime : inTime - mStart) * inRate;
	}
};

// The sample rate of media, and when in a clip's own time they begin.
struct MediaTime
{
	Ratio mRate;
	Ratio mStart;
};

// Nothing where the pitch follows the ramp of a clip. What cannot be kept becomes a note. inReach: what is heard, from the
// clip's exact start on.
std::optional<RampStretch> ChooseRampStretch(MakerContext& ioContext, Clip const& inClip,
	ItemTiming const& inTiming, TimeSpan const& inReach, MediaTime const& inMedia);

} // namespace SonaroHost::Otio
