#include "SonaroHost/OtioSequence/ProgrammeTimecode.h"

#include "Otio/Time/Timecode.h"

namespace SonaroHost::Otio
{

namespace
{

std::optional<double> FindRate(Item const& inItem)
{
	return inItem.mSourceRange ? std::optional(inItem.mSourceRange->mDuration.mRate) : std::nullopt;
}

} // namespace

std::optional<double> FindTimecodeRate(Timeline const& inTimeline)
{
	if (inTimeline.mGlobalStartTime)
	{
		return inTimeline.mGlobalStartTime->mRate;
	}
	for (Composable const& child : inTimeline.mTracks.mChildren)
	{
		Track const* const track = child.As<Track>();
		for (std::size_t i = 0; track && i < track->mChildren.size(); ++i)
		{
			Item const* const item = track->mChildren[i].AsItem();
			if (auto const rate = item ? FindRate(*item) : std::nullopt)
			{
				return rate;
			}
		}
	}
	return std::nullopt;
}

std::optional<ProgrammeTimecode> ProgrammeTimecode::Find(
	Timeline const& inTimeline, TimelineSequence const& inSequence)
{
	auto const rate = FindTimecodeRate(inTimeline);
	return rate ? std::optional(ProgrammeTimecode(*rate, inSequence.mGlobalStart.value_or(Ratio())))
				: std::nullopt;
}

std::string ProgrammeTimecode::GetLabel(Ratio const& inTime) const
{
	return FormatTimecode(mStart + inTime, mRate);
}

std::string ProgrammeTimecode::GetLength(Ratio const& inLength) const
{
	return FormatTimecode(inLength, mRate);
}

std::optional<Ratio> ProgrammeTimecode::FindTime(std::string const& inLabel) const
{
	auto const time = ParseTimecode(inLabel, mRate);
	return time ? std::optional(*time - mStart) : std::nullopt;
}

} // namespace SonaroHost::Otio
