#pragma once

#include "SonaroHost/Otio/Model.h"
#include "SonaroHost/OtioSequence/TimelineSequence.h"

#include <optional>
#include <string>

namespace SonaroHost::Otio
{

// Frames a second in which a timeline counts: those of its global start, or else of the first range in it.
std::optional<double> FindTimecodeRate(Timeline const& inTimeline);

// Times of a programme as timecode, at the timeline's rate.
class ProgrammeTimecode
{
public:
	// Nothing for a timeline that names no rate.
	static std::optional<ProgrammeTimecode> Find(
		Timeline const& inTimeline, TimelineSequence const& inSequence);

	double GetRate() const { return mRate; }
	// The label of a time in seconds from the start of the programme, which bears the timeline's global start.
	std::string GetLabel(Ratio const& inTime) const;
	std::string GetLength(Ratio const& inLength) const;
	// The time of a label, the reverse of GetLabel. Nothing for one that the rate does not have, such as a dropped one.
	std::optional<Ratio> FindTime(std::string const& inLabel) const;

private:
	ProgrammeTimecode(double inRate, Ratio const& inStart)
		: mRate(inRate),
		  mStart(inStart)
	{
	}

	double mRate;
	Ratio mStart;
};

} // namespace SonaroHost::Otio
