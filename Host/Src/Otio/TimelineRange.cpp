#include "SonaroHost/Otio/TimelineRange.h"

#include "Timecode.h"

#include "SonaroHost/HostError.h"
#include "SonaroHost/TimePosition.h"

#include <algorithm>
#include <optional>

namespace SonaroHost::Otio
{

namespace
{

[[noreturn]] void Refuse(std::string const& inMessage)
{
	throw HostError(HostError::Kind::eRequest, inMessage);
}

// Of the first item with a range, in the order of the file.
std::optional<double> FindRate(Item const& inItem)
{
	return inItem.mSourceRange ? std::optional(inItem.mSourceRange->mDuration.mRate) : std::nullopt;
}

std::optional<double> FindRate(Timeline const& inTimeline)
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

class RangeParser
{
public:
	RangeParser(std::string const& inText, Timeline const& inTimeline, TimelineSequence const& inSequence)
		: mText(inText),
		  mTimeline(inTimeline),
		  mSequence(inSequence)
	{
	}

	std::optional<ProgrammeRange> Parse() const
	{
		std::size_t const dots = mText.find("..");
		std::size_t const separator = dots == std::string::npos ? mText.find('+') : dots;
		if (separator == std::string::npos)
		{
			return std::nullopt;
		}
		bool const isEnd = dots != std::string::npos;
		std::int64_t const first = ParseFrames(mText.substr(0, separator), true);
		std::int64_t const second = ParseFrames(mText.substr(separator + (isEnd ? 2 : 1)), isEnd);
		return ProgrammeRange{first, isEnd ? second - first : second};
	}

private:
	std::int64_t ParseFrames(std::string const& inText, bool inIsLabel) const
	{
		if (IsTimecode(inText))
		{
			return ParseLabel(inText, inIsLabel);
		}
		auto const time = TimePosition::Parse(inText);
		if (!time)
		{
			Refuse("the range '" + mText + "' is none: '" + inText +
				   "' is no time; give seconds (12.5), minutes (1:02.5), samples (48000s) or timecode "
				   "(01:00:10:12)");
		}
		return time->ToSamples(mSequence.mSampleRate);
	}

	std::int64_t ParseLabel(std::string const& inText, bool inIsLabel) const
	{
		auto const rate = FindRate(mTimeline);
		if (!rate)
		{
			Refuse("the range '" + mText + "' has timecode, and the timeline has no rate; give seconds");
		}
		auto const time = ParseTimecode(inText, *rate);
		if (!time)
		{
			Refuse("the range '" + mText + "': there is no timecode '" + inText + "' at " +
				   std::to_string(*rate) + " frames a second");
		}
		Ratio const zero = inIsLabel ? mSequence.mGlobalStart.value_or(Ratio()) : Ratio();
		return ToSamples(*time - zero, mSequence.mSampleRate);
	}

	std::string const& mText;
	Timeline const& mTimeline;
	TimelineSequence const& mSequence;
};

ProgrammeRange Cut(ProgrammeRange const& inRange, TimelineSequence const& inSequence)
{
	std::int64_t const first = std::clamp<std::int64_t>(inRange.mFirstFrame, 0, inSequence.mFrames);
	std::int64_t const end = std::clamp(inRange.mFirstFrame + inRange.mFrames, first, inSequence.mFrames);
	return {first, end - first};
}

} // namespace

ProgrammeRange FindRange(
	std::string const& inText, Timeline const& inTimeline, TimelineSequence const& inSequence)
{
	auto const marker = std::find_if(inSequence.mMarkers.begin(), inSequence.mMarkers.end(),
		[&inText](MarkerRow const& inRow) { return inRow.mName == inText; });
	if (marker != inSequence.mMarkers.end())
	{
		ProgrammeRange const range = FindRange(*marker, inSequence);
		if (range.mFrames == 0)
		{
			Refuse("the marker \"" + inText + "\" has no length within the timeline");
		}
		return range;
	}
	auto const asked = RangeParser(inText, inTimeline, inSequence).Parse();
	if (!asked)
	{
		Refuse("the range '" + inText +
			   "' is neither a marker of the timeline nor START..END nor START+DURATION");
	}
	ProgrammeRange const range = Cut(*asked, inSequence);
	if (asked->mFirstFrame < 0 || range.mFrames == 0)
	{
		Refuse("the range '" + inText + "' has nothing of the timeline, which is " +
			   FormatTime(inSequence.mFrames, inSequence.mSampleRate) + " long");
	}
	return range;
}

ProgrammeRange FindRange(MarkerRow const& inMarker, TimelineSequence const& inSequence)
{
	std::int64_t const first = ToSamples(inMarker.mStart, inSequence.mSampleRate);
	return Cut({first, ToSamples(inMarker.mEnd, inSequence.mSampleRate) - first}, inSequence);
}

} // namespace SonaroHost::Otio
