#pragma once

#include "Passages.h"
#include "TimeMap.h"

#include "OtioSequence/Survey/Ranges.h"

#include "Sonaro/Types.h"
#include "SonaroHost/Otio/RationalTime.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace SonaroHost::Otio
{

// The frames of a sequence in the time of what it is made of. Times are rounded here and nowhere else; the
// origin of a nested sequence lies so that its frames fall on those of what it is nested in.
class Grid
{
public:
	Grid(int inSampleRate, Ratio const& inOrigin)
		: mSampleRate(inSampleRate),
		  mOrigin(inOrigin)
	{
	}
	// The grid in which inTime is a whole frame, outFrame, and 0 none below 0.
	static Grid MakeThrough(Ratio const& inTime, int inSampleRate, std::int64_t& outFrame);

	int GetSampleRate() const { return mSampleRate; }
	// The nearest frame, halves up.
	std::int64_t ToFrame(Ratio const& inTime) const { return ToSamples(inTime - mOrigin, mSampleRate); }
	Ratio ToTime(std::int64_t inFrame) const { return mOrigin + Ratio(inFrame, mSampleRate); }
	// The frame's time in the sequence's own time.
	SN::TickTime ToTicks(std::int64_t inFrame) const;

private:
	int mSampleRate;
	Ratio mOrigin;
};

// Frames of the programme in which an angle of a multicam stack is heard, its index from 0 on.
struct AngleStretch
{
	Passage mPassage;
	std::size_t mAngle = 0;
};

// Where in the timeline a composition is made.
struct Scope
{
	Grid mGrid;
	// Maps the composition's time to that of the programme.
	TimeMap mToProgramme;
	// The part of the composition's time that is visible through all that it is nested in.
	TimeSpan mVisible;
	// The same with what crossfades of those add.
	TimeSpan mNeeded;
	// "Dialogue / Scene 4"; empty for the timeline itself.
	std::string mTrack;
	std::size_t mDepth = 0;
	// Why nothing of it is heard; then only its rows count.
	std::string mWhySilent;
	std::shared_ptr<Hearing const> mHearing;
	// Of a multicam stack, in the order of the programme; null for others.
	std::shared_ptr<std::vector<AngleStretch> const> mAngles;
};

// A time for people, to the millisecond: "1:02:03.500", "-0:00.250".
std::string DescribeTime(Ratio const& inSeconds);
// "0:01.000 to 0:02.500".
std::string DescribeSpan(TimeSpan const& inSpan);

// What the item is called.
std::string GetLabel(ItemView const& inItem);

} // namespace SonaroHost::Otio
