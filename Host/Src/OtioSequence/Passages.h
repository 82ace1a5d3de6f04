#pragma once

#include "TimeMap.h"

#include "SonaroHost/Base/Ratio.h"
#include "SonaroHost/Base/SpeedCurve.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace SonaroHost::Otio
{

// Frames of the programme from one to before another, in the middle of which the time of a composition goes in one
// direction or stands still.
struct Passage
{
	std::int64_t mFirst = 0;
	std::int64_t mEnd = 0;
};

// The times of a composition in the middle of the programme's frames. A time that is reached exactly there counts as
// reached with the next frame, as a boundary that is rounded does, halves up.
class FrameTimes
{
public:
	FrameTimes(TimeMap inFromProgramme, int inSampleRate)
		: mFromProgramme(std::move(inFromProgramme)),
		  mSampleRate(inSampleRate)
	{
	}

	Ratio GetTime(std::int64_t inFrame) const;
	bool IsFalling(Passage const& inPassage) const;
	// The parts of a passage between the frames in which it reaches some times, which are in any order.
	std::vector<Passage> Split(Passage const& inPassage, std::vector<Ratio> const& inTimes) const;

private:
	// The first frame after a time; the passage's end where there is none.
	std::int64_t FindFrame(Passage const& inPassage, Ratio const& inTime) const;

	TimeMap mFromProgramme;
	int mSampleRate;
};

// When a composition is heard through all that it is nested in.
class Hearing
{
public:
	explicit Hearing(std::vector<Passage> inPassages)
		: mPassages(std::move(inPassages))
	{
	}
	// An item of what inOuter is the hearing of. inReach: in the outer time, as inTurns, at which the direction of its
	// content changes.
	Hearing(std::shared_ptr<Hearing const> inOuter, FrameTimes inOuterTimes, TimeSpan const& inReach,
		std::vector<Ratio> inTurns);

	// In the order of the programme. They are found here, as few compositions are asked.
	std::vector<Passage> ListPassages() const;

private:
	std::shared_ptr<Hearing const> mOuter;
	FrameTimes mOuterTimes{TimeMap(), 1};
	TimeSpan mReach;
	std::vector<Ratio> mBorders;
	// Without an outer one.
	std::vector<Passage> mPassages;
};

} // namespace SonaroHost::Otio
