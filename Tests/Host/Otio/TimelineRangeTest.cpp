#include "SonaroHost/OtioSequence/TimelineRange.h"

#include "Host/Refusal.h"
#include "Host/TimelineJson.h"
#include "SonaroHost/Media/MediaFinder.h"
#include "SonaroHost/Otio/Reader.h"
#include "SonaroHost/OtioSequence/TimelineMaker.h"
#include "SonaroHost/Sequence/FileMedia.h"

#include <gmock/gmock.h>

#include <string>

namespace SonaroHost::Testing::TimelineRangeTest
{
namespace
{

using Otio::FoundRange;
using Otio::Note;
using testing::HasSubstr;

class TimelineRangeTest : public testing::Test
{
protected:
	TimelineRangeTest()
	{
		// Ten seconds at 25 frames a second from 01:00:00:00 on.
		Json const timeline =
			With(Timeline({Track("A1", {Gap(10.0)})},
					 {Marker("Intro", 1.0, 1.0), Marker("Verse", 3.0, 0.0), Marker("Verse", 5.0, 0.0),
						 Marker("Same", 5.0, 0.4), Marker("A..B", 2.0, 1.0), Marker("C+1", 6.0, 1.0),
						 Marker("7", 7.0, 0.0), Marker("Last", 8.0, 0.0), Marker("End", 10.0, 0.0)}),
				{{"global_start_time", Time(3600.0)}});
		mDocument = Otio::ReadDocument(timeline.dump(), "edit.otio");
		mSequence = MakeTimelineSequence(mDocument.mTimelines.front(), MediaFinder({}, {}), mMedia);
	}

	Otio::Document mDocument;
	FileMedia mMedia;
	Otio::TimelineSequence mSequence;
};

constexpr double kRefused = -1.0;

struct RangeCase
{
	char const* mText;
	// In seconds.
	double mStart;
	double mEnd;
	// A part of the remark, or of the refusal.
	char const* mSays = "";
};

constexpr RangeCase kRangeCases[] = {
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
	{"9..11", 9.0, 10.0, "'9..11' extends past the end"},
	{"9+1:00", 9.0, 10.0, "shortened to end there, at 0:10.000"},
	{"9..10", 9.0, 10.0},
	{"10..", kRefused, 0.0, "starts at or after the end of the timeline, which is 0:10.000 long"},
	{"11..12", kRefused, 0.0, "starts at or after"},
	{"00:59:00:00..", kRefused, 0.0, "starts before the timeline"},
	// Nothing between.
	{"3..2", kRefused, 0.0, "ends before it starts"},
	{"3..3", kRefused, 0.0, "shorter than one sample"},
	{"3+0", kRefused, 0.0, "shorter than one sample"},
	{"..01:00:00:00", kRefused, 0.0, "shorter than one sample"},
	// Markers: a range, points, and one at the end.
	{"Intro", 1.0, 2.0},
	{"Verse", 3.0, 5.0},
	{"Last", 8.0, 10.0},
	{"End", kRefused, 0.0, "the marker 'End' is at the end"},
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
	{"6..7", 6.0, 7.0, "'7' in the range '6..7' is treated as a time"},
	// Neither.
	{"Chorus", kRefused, 0.0, "it is not a marker; use START..END"},
	{"Intro..Chorus", kRefused, 0.0, "'Chorus' is neither a time nor a marker"},
	{"1..-2", kRefused, 0.0, "'-2' is neither"},
	{"1+", kRefused, 0.0, "'' is not a time"},
	{"+1", kRefused, 0.0, "'' is neither"},
	{"1+Intro", kRefused, 0.0, "'Intro' is not a time"},
	{"01:00:01:25..", kRefused, 0.0, "'01:00:01:25' is not a valid timecode at 25 fps"},
	{"Intro..Verse..", kRefused, 0.0, "'Verse..' is neither"},
};

TEST_F(TimelineRangeTest, TextsNameSamplesOrAreRefused)
{
	for (RangeCase const& test : kRangeCases)
	{
		SCOPED_TRACE(test.mText);
		FoundRange found;
		auto const find = [&] { found = FindRange(test.mText, mDocument.mTimelines.front(), mSequence); };
		std::string const refusal = GetRefusalOf(find, HostError::Kind::kRequest);
		EXPECT_EQ(refusal.empty(), test.mStart != kRefused) << refusal;
		if (!refusal.empty())
		{
			EXPECT_THAT(refusal, HasSubstr(test.mSays));
			continue;
		}
		EXPECT_NEAR(static_cast<double>(found.mRange.mFirstFrame) / 48000.0, test.mStart, 1.0e-9);
		EXPECT_NEAR(static_cast<double>(found.mRange.mFirstFrame + found.mRange.mFrames) / 48000.0, test.mEnd,
			1.0e-9);
		EXPECT_EQ(found.mNotes.empty(), std::string(test.mSays).empty());
		for (Note const& note : found.mNotes)
		{
			EXPECT_EQ(note.mKind, Note::Kind::kRemark);
			EXPECT_THAT(note.mText, HasSubstr(test.mSays));
		}
	}
}

TEST_F(TimelineRangeTest, TimecodesBeforeZeroBeginWithAMinus)
{
	mSequence.mGlobalStart = Ratio(-5);
	ProgrammeRange const range =
		FindRange("-00:00:03:00..-00:00:00:15", mDocument.mTimelines.front(), mSequence).mRange;
	EXPECT_EQ(range.mFirstFrame, 2 * 48000);
	EXPECT_EQ(range.mFrames, 48000 * 12 / 5);
}

} // namespace
} // namespace SonaroHost::Testing::TimelineRangeTest
