#include "Support/Engine.h"

namespace SN::PrefetchTest
{

TickTime Seconds(double inSeconds)
{
	return TickTime::FromSeconds(inSeconds);
}

TEST(PrefetchRange, ShiftsBothEndsAndScalesAboutTimeZero)
{
	PrefetchRange const range(Seconds(23), Seconds(42));
	EXPECT_EQ(range + Seconds(10), PrefetchRange(Seconds(33), Seconds(52)));
	EXPECT_EQ(range - Seconds(10), PrefetchRange(Seconds(13), Seconds(32)));
	EXPECT_EQ(range * 2.0, PrefetchRange(Seconds(46), Seconds(84)));
	EXPECT_EQ(range / 2.0, PrefetchRange(Seconds(11.5), Seconds(21)));
	PrefetchRange changed = range;
	changed += Seconds(10);
	changed *= 2.0;
	changed -= Seconds(6);
	changed /= 4.0;
	EXPECT_EQ(changed, PrefetchRange(Seconds(15), Seconds(24.5)));
	EXPECT_NE(range, PrefetchRange(Seconds(22), Seconds(42)));
	EXPECT_NE(range, PrefetchRange(Seconds(23), Seconds(41)));
}

TEST(PrefetchRange, BothEndsBelongToItAndLengthMakesItValid)
{
	TickTime const tick = TickTime::FromTicks(1);
	struct Case
	{
		char const* mName;
		PrefetchRange mRange;
		bool mValid;
		bool mContainsStart;
		bool mContainsEnd;
	};
	Case const cases[] = {
		{"default", {}, false, true, true},
		{"long", {Seconds(23), Seconds(42)}, true, true, true},
		{"a tick", {Seconds(23), Seconds(23) + tick}, true, true, true},
		{"empty", {Seconds(23), Seconds(23)}, false, true, true},
		{"backwards", {Seconds(42), Seconds(23)}, false, false, false},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		EXPECT_EQ(test.mRange.IsValid(), test.mValid);
		EXPECT_EQ(test.mRange.IsEmpty(), !test.mValid);
		EXPECT_EQ(test.mRange.Contains(test.mRange.mStart), test.mContainsStart);
		EXPECT_EQ(test.mRange.Contains(test.mRange.mEnd), test.mContainsEnd);
		EXPECT_FALSE(test.mRange.Contains(test.mRange.mStart - tick));
		EXPECT_FALSE(test.mRange.Contains(std::max(test.mRange.mEnd, test.mRange.mStart) + tick));
	}
	EXPECT_EQ(PrefetchRange(), PrefetchRange(kTime_Invalid, kTime_Invalid));
}

TEST(PrefetchRequestAccumulator, EachTypeGoesToItsListWithItsKind)
{
	auto const source = MakeObject<FakeSource>(1, 100, SourceKind{false, true});
	std::vector<SynchronousPrefetchRequest> synchronous;
	std::vector<AudioPrefetch::PrefetchRequest> asynchronous;
	PrefetchRequestAccumulator accumulator(
		PrefetchRequestAccumulator::ExtendCapacity, &synchronous, &asynchronous);
	accumulator.AddPrefetchRequest(SynchronousPrefetch, source, Seconds(1), 11);
	accumulator.AddPrefetchRequest(AsynchronousPrefetch, source, Seconds(2), 22);
	accumulator.AddPrefetchRequest(AsynchronousPrepareForPrefetch, source, Seconds(3), 33);
	accumulator.AddPrefetchRequest(static_cast<PrefetchType>(3), source, Seconds(4), 44);
	ASSERT_EQ(synchronous.size(), 1u);
	EXPECT_EQ(synchronous[0].source, source);
	EXPECT_EQ(synchronous[0].time, Seconds(1));
	EXPECT_EQ(synchronous[0].numSamples, 11u);
	ASSERT_EQ(asynchronous.size(), 3u);
	EXPECT_EQ(asynchronous[0].kind, 0);
	EXPECT_EQ(asynchronous[0].time, Seconds(2));
	EXPECT_EQ(asynchronous[0].numSamples, 22u);
	EXPECT_EQ(asynchronous[1].kind, 1);
	EXPECT_EQ(asynchronous[2].kind, 1);
	EXPECT_FALSE(accumulator.DroppedPrefetchRequests());
}

TEST(PrefetchRequestAccumulator, AFullListOfFixedCapacityDropsForGood)
{
	auto const source = MakeObject<FakeSource>(1, 100, SourceKind{false, true});
	std::vector<SynchronousPrefetchRequest> synchronous;
	synchronous.reserve(1);
	std::size_t const room = synchronous.capacity();
	PrefetchRequestAccumulator accumulator(PrefetchRequestAccumulator::FixedCapacity, &synchronous, nullptr);
	for (std::size_t i = 0; i < room; ++i)
	{
		accumulator.AddPrefetchRequest(SynchronousPrefetch, source, Seconds(1), 11);
	}
	// A list that nobody wants loses its requests without a drop.
	accumulator.AddPrefetchRequest(AsynchronousPrefetch, source, Seconds(1), 11);
	EXPECT_FALSE(accumulator.DroppedPrefetchRequests());
	accumulator.AddPrefetchRequest(SynchronousPrefetch, source, Seconds(1), 11);
	EXPECT_TRUE(accumulator.DroppedPrefetchRequests());
	EXPECT_EQ(synchronous.size(), room);
	synchronous.clear();
	accumulator.AddPrefetchRequest(SynchronousPrefetch, source, Seconds(1), 11);
	EXPECT_TRUE(accumulator.DroppedPrefetchRequests());
	EXPECT_EQ(synchronous.size(), 1u);
}

} // namespace SN::PrefetchTest
