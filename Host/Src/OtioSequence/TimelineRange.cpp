#include "SonaroHost/OtioSequence/TimelineRange.h"

#include "Otio/Time/Timecode.h"

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Base/NumberText.h"
#include "SonaroHost/Base/TimePosition.h"
#include "SonaroHost/OtioSequence/ProgrammeTimecode.h"

#include <algorithm>
#include <optional>

namespace SonaroHost::Otio
{

namespace
{

// The remedy for what is neither a time nor a marker.
constexpr char const* kRangeRemedy =
	"use seconds (12.5), minutes (1:02.5), hours (1:00:02.5), samples (48000s), timecode (01:00:10:12) "
	"or the name of a marker";

class RangeParser
{
public:
	RangeParser(std::string const& inText, Timeline const& inTimeline, TimelineSequence const& inSequence)
		: mText(inText),
		  mTimeline(inTimeline),
		  mSequence(inSequence)
	{
	}

	// The range as asked for; it may reach beyond the programme.
	ProgrammeRange Parse()
	{
		for (std::string const separator : {"..", "+"})
		{
			for (std::size_t at = mText.find(separator); at != std::string::npos;
				 at = mText.find(separator, at + 1))
			{
				std::string const left = mText.substr(0, at);
				std::string const right = mText.substr(at + separator.size());
				mNotes.clear();
				if (auto const found = separator == "+" ? ParseLength(left, right) : ParseSpan(left, right))
				{
					return *found;
				}
			}
		}
		Refuse("the range '" + mText + "' is not valid: " +
			   (mReason.empty() ? "it is not a marker; use START..END, START+DURATION or the name of a marker"
								: mReason));
	}

	std::vector<Note> const& GetNotes() const { return mNotes; }

private:
	using Frame = std::optional<std::int64_t>;

	std::optional<ProgrammeRange> ParseSpan(std::string const& inStart, std::string const& inEnd)
	{
		constexpr std::int64_t kBefore = -1;
		Frame const start = inStart.empty() ? Frame(0) : FindPlace(inStart, kBefore);
		if (!start)
		{
			return std::nullopt;
		}
		Frame const end = inEnd.empty() ? Frame(mSequence.mFrames) : FindPlace(inEnd, *start);
		return end ? std::optional(ProgrammeRange{*start, *end - *start}) : std::nullopt;
	}

	std::optional<ProgrammeRange> ParseLength(std::string const& inStart, std::string const& inLength)
	{
		constexpr std::int64_t kBefore = -1;
		Frame const start = FindPlace(inStart, kBefore);
		Frame const frames = start ? ParseTime(inLength, Ratio()) : std::nullopt;
		if (start && !frames)
		{
			Excuse("'" + inLength + "' is not a time");
		}
		return frames ? std::optional(ProgrammeRange{*start, *frames}) : std::nullopt;
	}

	// Takes the first one after inAfter of several markers.
	Frame FindPlace(std::string const& inText, std::int64_t inAfter)
	{
		Frame const time = ParseTime(inText, mSequence.mGlobalStart.value_or(Ratio()));
		Frame const marker = FindMarker(inText, inAfter);
		if (time && marker)
		{
			mNotes.push_back({Note::Kind::kRemark, "",
				"'" + inText + "' in the range '" + mText +
					"' is treated as a time, although a marker has that name"});
		}
		else if (!time && !marker)
		{
			Excuse("'" + inText + "' is neither a time nor a marker");
		}
		return time ? time : marker;
	}

	Frame FindMarker(std::string const& inName, std::int64_t inAfter) const
	{
		Frame found;
		for (MarkerRow const& marker : mSequence.mMarkers)
		{
			std::int64_t const frame = ToSamples(marker.mStart, mSequence.mSampleRate);
			if (marker.mName == inName && (!found || *found <= inAfter))
			{
				found = !found || frame > inAfter ? frame : found;
			}
		}
		return found;
	}

	// inZero: what timecode counts from.
	Frame ParseTime(std::string const& inText, Ratio const& inZero)
	{
		if (!IsTimecode(inText))
		{
			auto const time = TimePosition::Parse(inText);
			return time ? Frame(time->ToSamples(mSequence.mSampleRate)) : std::nullopt;
		}
		auto const rate = FindTimecodeRate(mTimeline);
		auto const time = rate ? ParseTimecode(inText, *rate) : std::nullopt;
		if (!rate)
		{
			Excuse("timecode cannot be used because the timeline has no frame rate", "use seconds (12.5)");
		}
		else if (!time)
		{
			Excuse("'" + inText + "' is not a valid timecode at " + FormatNumber(*rate) + " fps");
		}
		else if (CanDropFrames(*rate) && inText.find_first_of(";,") == std::string::npos)
		{
			mNotes.push_back({Note::Kind::kRemark, "",
				"'" + inText + "' in the range '" + mText +
					"' is treated as non-drop-frame timecode; for drop-frame timecode, put a semicolon "
					"before the frames (01:00:10;12)"});
		}
		return time ? Frame(ToSamples(*time - inZero, mSequence.mSampleRate)) : std::nullopt;
	}

	// The first reason is given, with its remedy.
	void Excuse(std::string const& inReason, std::string const& inRemedy = kRangeRemedy)
	{
		if (mReason.empty())
		{
			mReason = inReason + "; " + inRemedy;
		}
	}

	std::string const& mText;
	Timeline const& mTimeline;
	TimelineSequence const& mSequence;
	std::vector<Note> mNotes;
	std::string mReason;
};

ProgrammeRange Cut(ProgrammeRange const& inRange, TimelineSequence const& inSequence)
{
	std::int64_t const first = std::clamp<std::int64_t>(inRange.mFirstFrame, 0, inSequence.mFrames);
	std::int64_t const end = std::clamp(inRange.mFirstFrame + inRange.mFrames, first, inSequence.mFrames);
	return {first, end - first};
}

FoundRange FindMarked(MarkerRow const& inMarker, TimelineSequence const& inSequence)
{
	ProgrammeRange const range = FindNamedRange(inMarker, inSequence);
	if (range.mFrames == 0)
	{
		Refuse("the marker '" + inMarker.mName +
			   "' is at the end of the timeline, so it selects nothing; choose another marker or use "
			   "START..END");
	}
	return {range, {}};
}

void CheckAsked(std::string const& inText, ProgrammeRange const& inAsked, TimelineSequence const& inSequence)
{
	std::string const length = FormatTime(inSequence.mFrames, inSequence.mSampleRate);
	if (inAsked.mFirstFrame < 0)
	{
		Refuse("the range '" + inText + "' starts before the timeline does; use a later start");
	}
	if (inAsked.mFirstFrame >= inSequence.mFrames)
	{
		Refuse("the range '" + inText + "' starts at or after the end of the timeline, which is " + length +
			   " long");
	}
	if (inAsked.mFrames < 0)
	{
		Refuse("the range '" + inText + "' ends before it starts");
	}
	if (inAsked.mFrames == 0)
	{
		Refuse("the range '" + inText + "' is shorter than one sample, so it selects nothing");
	}
}

} // namespace

FoundRange FindRange(
	std::string const& inText, Timeline const& inTimeline, TimelineSequence const& inSequence)
{
	auto const marker = std::ranges::find(inSequence.mMarkers, inText, &MarkerRow::mName);
	if (marker != inSequence.mMarkers.end())
	{
		return FindMarked(*marker, inSequence);
	}
	RangeParser parser(inText, inTimeline, inSequence);
	ProgrammeRange const asked = parser.Parse();
	CheckAsked(inText, asked, inSequence);
	FoundRange found{Cut(asked, inSequence), parser.GetNotes()};
	if (found.mRange.mFrames < asked.mFrames)
	{
		found.mNotes.push_back({Note::Kind::kRemark, "",
			"the range '" + inText + "' extends past the end of the timeline; shortened to end there, at " +
				FormatTime(inSequence.mFrames, inSequence.mSampleRate)});
	}
	return found;
}

ProgrammeRange FindRange(MarkerRow const& inMarker, TimelineSequence const& inSequence)
{
	std::int64_t const first = ToSamples(inMarker.mStart, inSequence.mSampleRate);
	return Cut({first, ToSamples(inMarker.mEnd, inSequence.mSampleRate) - first}, inSequence);
}

ProgrammeRange FindNamedRange(MarkerRow const& inMarker, TimelineSequence const& inSequence)
{
	ProgrammeRange range = FindRange(inMarker, inSequence);
	if (range.mFrames == 0)
	{
		auto const isLater = [&](MarkerRow const& inRow)
		{ return ToSamples(inRow.mStart, inSequence.mSampleRate) > range.mFirstFrame; };
		auto const next = std::find_if(
			std::upper_bound(inSequence.mMarkers.begin(), inSequence.mMarkers.end(), inMarker,
				[](MarkerRow const& inA, MarkerRow const& inB) { return inA.mStart < inB.mStart; }),
			inSequence.mMarkers.end(), isLater);
		std::int64_t const end = next == inSequence.mMarkers.end()
									 ? inSequence.mFrames
									 : ToSamples(next->mStart, inSequence.mSampleRate);
		range = Cut({range.mFirstFrame, end - range.mFirstFrame}, inSequence);
	}
	return range;
}

} // namespace SonaroHost::Otio
