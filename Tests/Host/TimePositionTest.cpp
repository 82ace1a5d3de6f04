#include "SonaroHost/Base/TimePosition.h"

#include <gtest/gtest.h>

#include <string>

namespace SonaroHost::TimePositionTest
{
namespace
{

struct TimeCase
{
	char const* mText;
	std::int64_t mAt44100;
	std::int64_t mAt48000;
};

TEST(TimePosition, ReadsEveryWayToWriteATime)
{
	constexpr TimeCase kCases[] = {
		// text                 at 44100 Hz   at 48000 Hz
		{"0", 0, 0},
		{"1", 44100, 48000},
		{"12.5", 551250, 600000},
		{".5", 22050, 24000},
		{"2.", 88200, 96000},
		{"90", 3969000, 4320000},
		{"1:30", 3969000, 4320000},
		{"01:02.500", 2756250, 3000000},
		{"90:00", 238140000, 259200000},
		{"1:00:02.5", 158870250, 172920000},
		{"100:00:00", 15876000000, 17280000000},
		{"0s", 0, 0},
		{"48000s", 48000, 48000},
		// Half a sample goes up, less than half down: 0.00001 s are 0.441 and 0.48 samples.
		{"0.00001", 0, 0},
		{"0.0000125", 1, 1},
		{"0.000022675", 1, 1},
		// Digits beyond nanoseconds count for nothing.
		{"1.0000000009999", 44100, 48000},
	};
	for (TimeCase const& test : kCases)
	{
		SCOPED_TRACE(test.mText);
		auto const time = TimePosition::Parse(test.mText);
		ASSERT_TRUE(time);
		EXPECT_EQ(time->ToSamples(44100), test.mAt44100);
		EXPECT_EQ(time->ToSamples(48000), test.mAt48000);
	}
}

TEST(TimePosition, RefusesWhatIsNoTime)
{
	for (char const* const text : {"", "-1", "-48000s", "-0", "+1", "1,5", "1:60", "1:2:60", "1:60:00",
			 "1:2:3:4", ":30", "1:", "1::2", ".", "1.2.3", "1.5s", "s", "1e3", "0x10", "inf", "nan", " 1",
			 "1 ", "1:-2", "1.-5", "99999999999999999999", "99999999999999999999s"})
	{
		SCOPED_TRACE(text);
		EXPECT_FALSE(TimePosition::Parse(text));
	}
}

} // namespace
} // namespace SonaroHost::TimePositionTest
