#include "Prefetch/DiskLoad.h"

#include "Support/Engine.h"
#include "zorvcore/utility/HighPrecisionTime.h"

namespace SN::AudioPrefetch::DiskLoadTest
{

namespace Clock = zorvcore::utility::HighPrecisionTime;

constexpr long long kMost = std::numeric_limits<long long>::max();
constexpr long long kLeast = std::numeric_limits<long long>::min();

TEST(DiskLoad, TimesBecomeWholeNanosecondsWithoutOverflow)
{
	struct Case
	{
		char const* mName;
		TickTime mTime;
		long long mNanos;
	};
	Case const cases[] = {
		{"nothing", kTimeZero, 0},
		{"a second", TickTime::FromSeconds(1), 1000000000},
		{"a microsecond", TickTime::FromTicks(254016), 1000},
		{"a tick", TickTime::FromTicks(1), 0},
		{"the last tick before a nanosecond", TickTime::FromTicks(254), 0},
		{"the first tick after it", TickTime::FromTicks(255), 1},
		{"negative, towards 0", TickTime::FromTicks(-509), -2},
		{"a sample at 44100 Hz", TickTime::FromTicks(5760000), 22675},
		{"the longest time line", kTimeMax, 360000000000000},
		{"a tick less", kTimeMax - TickTime::FromTicks(1), 359999999999999},
		{"the longest of all", TickTime::FromTicks(kMost), 36310201077313144},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		EXPECT_EQ(ToNanoseconds(test.mTime), test.mNanos);
	}
}

TEST(DiskLoad, PercentagesStayWithin32Bits)
{
	struct Case
	{
		char const* mName;
		long long mElapsed;
		long long mInterval;
		int mPercent;
	};
	Case const cases[] = {
		{"in time", 0, 2000000000, 0},
		{"half an interval", 1000000000, 2000000000, 50},
		{"just not a percent more", 2219999999, 2000000000, 110},
		{"wanted in the future", -1000000000, 2000000000, -50},
		{"interval backwards", 1000000000, -2000000000, -50},
		{"clamped above", 1000000000, 1, std::numeric_limits<int>::max()},
		{"clamped below", -1000000000, 1, std::numeric_limits<int>::min()},
		{"oldest stamp", kMost, 1, std::numeric_limits<int>::max()},
		{"latest stamp", kLeast, 1, std::numeric_limits<int>::min()},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		EXPECT_EQ(ToLoadPercent(test.mElapsed, test.mInterval), test.mPercent);
	}
}

// Stamps far ahead of now make the load a large negative number, beside which the moments that the test
// itself takes are small.
TEST(DiskLoad, AnIntervalOf0StandsForTwoSeconds)
{
	unsigned long long const ahead =
		20000000000000ull / static_cast<unsigned long long>(Clock::ConvertToNanos(1));
	DiskLoad load;
	load.Measure(Clock::GetCurrentTimeStamp() + ahead);
	EXPECT_NEAR(load.GetPercent(), -1000000, 100000) << "at first";
	for (double const seconds : {4.0, 2.0, 0.0})
	{
		SCOPED_TRACE(seconds);
		load.SetInterval(TickTime::FromSeconds(seconds));
		load.Measure(Clock::GetCurrentTimeStamp() + ahead);
		EXPECT_NEAR(load.GetPercent(), seconds == 4.0 ? -500000 : -1000000, 100000);
	}
	EXPECT_FALSE(load.TakeBehind());
}

} // namespace SN::AudioPrefetch::DiskLoadTest
