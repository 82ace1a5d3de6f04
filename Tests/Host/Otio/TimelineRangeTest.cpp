#include "SonaroHost/OtioSequence/TimelineRange.h"

#include "SonaroHost/Base/HostError.h"
#include "SonaroHost/Media/MediaFinder.h"
#include "SonaroHost/Otio/Reader.h"
#include "SonaroHost/OtioSequence/TimelineMaker.h"
#include "SonaroHost/Sequence/FileMedia.h"

#include <gmock/gmock.h>

#include <string>

namespace SonaroHost::Otio::Testing
{
namespace
{

using testing::HasSubstr;

// Ten seconds at 25 frames a second from 01:00:00:00 on; times in JSON are frames.
std::string MakeTimeline(std::string const& inMarkers)
{
	return R"({"OTIO_SCHEMA": "Timeline.1", "name": "", "metadata": {},
		"global_start_time": {"OTIO_SCHEMA": "RationalTime.1", "value": 90000, "rate": 25},
		"tracks": {"OTIO_SCHEMA": "Stack.1", "markers": [)" +
		   inMarkers + R"(], "children": [{"OTIO_SCHEMA": "Track.1", "kind": "Audio", "children": [
			{"OTIO_SCHEMA": "Gap.1", "source_range": {"OTIO_SCHEMA": "TimeRange.1",
				"start_time": {"OTIO_SCHEMA": "RationalTime.1", "value": 0, "rate": 25},
				"duration": {"OTIO_SCHEMA": "RationalTime.1", "value": 250, "rate": 25}}}]}]}})";
}

struct Named
{
	std::string mName;
	int mFrame;
	int mFrames;
};

std::string MakeMarker(Named const& inMarker)
{
	return R"({"OTIO_SCHEMA": "Marker.2", "name": ")" + inMarker.mName +
		   R"(", "marked_range": {"OTIO_SCHEMA": "TimeRange.1", "start_time": {"OTIO_SCHEMA": "RationalTime.1",
			"rate": 25, "value": )" +
		   std::to_string(inMarker.mFrame) +
		   R"(}, "duration": {"OTIO_SCHEMA": "RationalTime.1", "rate": 25, "value": )" +
		   std::to_string(inMarker.mFrames) + "}}}";
}

class TimelineRangeTest : public testing::Test
{
protected:
	TimelineRangeTest()
	{
		std::string markers;
		for (Named const& marker :
			{Named{"Intro", 25, 25}, {"Verse", 75, 0}, {"Verse", 125, 0}, {"Same", 125, 10}, {"A..B", 50, 25},
				{"C+1", 150, 25}, {"7", 175, 0}, {"Last", 200, 0}, {"End", 250, 0}})
		{
			markers += (markers.empty() ? "" : ", ") + MakeMarker(marker);
		}
		mDocument = ReadDocument(MakeTimeline(markers), "edit.otio");
		mSequence = MakeTimelineSequence(mDocument.mTimelines.front(), MediaFinder({}, {}), mMedia);
	}

	Document mDocument;
	FileMedia mMedia;
	TimelineSequence mSequence;
};

TEST_F(TimelineRangeTest, TextsNameSamplesOrAreRefused)
{
	struct Case
	{
		char const* mText;
		// In samples at 48 kHz.
		double mStart;
		double mEnd;
		// A part of the remark, or of the refusal.
		char const* mSays = "";
	};
	constexpr double kRefused = -1.0;
	constexpr Case kCases[] = {
		// text                    start     end       remark or refusal
		{"2..3.5", 2.0, 3.5},
		{"5..", 5.0, 10.0},
		{"..2.5", 0.0, 2.5},
		{"..", 0.0, 10.0},
		{"48000s+0:02", 1.0, 3.0},
		{"01:00:02:05..01:00:03:00", 2.2, 3.0},
		{"01:00:02:05+00:00:01:05", 2.2, 3.4},
		{"..01:00:02:00", 0.0, 2.0},
		{"01:00:09:00..", 9.0, 10.0},
		// Beyond the end.
		{"9..11", 9.0, 10.0, "'9..11' reaches beyond the end"},
		{"9+1:00", 9.0, 10.0, "cut there, at 0:10.000"},
		{"9..10", 9.0, 10.0},
		{"10..", kRefused, 0.0, "starts beyond the end of the timeline, which is 0:10.000 long"},
		{"11..12", kRefused, 0.0, "starts beyond"},
		{"00:59:00:00..", kRefused, 0.0, "starts before the timeline"},
		// Nothing between.
		{"3..2", kRefused, 0.0, "ends before it starts"},
		{"3..3", kRefused, 0.0, "less than a sample"},
		{"3+0", kRefused, 0.0, "less than a sample"},
		{"..01:00:00:00", kRefused, 0.0, "less than a sample"},
		// Markers: a range, points, and one at the end.
		{"Intro", 1.0, 2.0},
		{"Verse", 3.0, 5.0},
		{"Last", 8.0, 10.0},
		{"End", kRefused, 0.0, "\"End\" stands at the end"},
		{"Intro..Verse", 1.0, 3.0},
		{"Verse..Verse", 3.0, 5.0},
		{"Same..Verse", kRefused, 0.0, "ends before it starts"},
		{"Last..Intro", kRefused, 0.0, "ends before it starts"},
		{"Intro..", 1.0, 10.0},
		{"..Intro", 0.0, 1.0},
		{"Intro..4", 1.0, 4.0},
		{"01:00:00:05..Intro", 0.2, 1.0},
		{"Intro+0.5", 1.0, 1.5},
		// Names that look like something else.
		{"A..B", 2.0, 3.0},
		{"A..B..Last", 2.0, 8.0},
		{"Intro..A..B", 1.0, 2.0},
		{"A..B+0.5", 2.0, 2.5},
		{"C+1", 6.0, 7.0},
		{"C+1+0.5", 6.0, 6.5},
		{"C+1..", 6.0, 10.0},
		{"7", 7.0, 8.0},
		{"6..7", 6.0, 7.0, "'7' in the range '6..7' is read as a time"},
		// Neither.
		{"Chorus", kRefused, 0.0, "neither a marker of the timeline nor START..END"},
		{"Intro..Chorus", kRefused, 0.0, "'Chorus' is neither a marker nor a time"},
		{"1..-2", kRefused, 0.0, "'-2' is neither"},
		{"1+", kRefused, 0.0, "'' is no time"},
		{"+1", kRefused, 0.0, "'' is neither"},
		{"1+Intro", kRefused, 0.0, "'Intro' is no time"},
		{"01:00:01:25..", kRefused, 0.0, "there is no timecode '01:00:01:25' at 25"},
		{"Intro..Verse..", kRefused, 0.0, "'Verse..' is neither"},
	};
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(test.mText);
		try
		{
			FoundRange const found = FindRange(test.mText, mDocument.mTimelines.front(), mSequence);
			EXPECT_NEAR(static_cast<double>(found.mRange.mFirstFrame) / 48000.0, test.mStart, 1.0e-9);
			EXPECT_NEAR(static_cast<double>(found.mRange.mFirstFrame + found.mRange.mFrames) / 48000.0,
				test.mEnd, 1.0e-9);
			EXPECT_EQ(found.mNotes.empty(), std::string(test.mSays).empty());
			for (Note const& note : found.mNotes)
			{
				EXPECT_EQ(note.mKind, Note::Kind::eRemark);
				EXPECT_THAT(note.mText, HasSubstr(test.mSays));
			}
		}
		catch (HostError const& error)
		{
			EXPECT_EQ(test.mStart, kRefused) << error.what();
			EXPECT_EQ(error.GetKind(), HostError::Kind::eRequest);
			EXPECT_THAT(error.what(), HasSubstr(test.mSays));
		}
	}
}

} // namespace
} // namespace SonaroHost::Otio::Testing
