#include "SonaroHost/Engine/TimeTransforms.h"

#include "SonaroHost/Base/HostError.h"

#include <gtest/gtest.h>

#include <limits>

namespace SonaroHost::Testing::TimeTransformsTest
{

using SN::TickTime;

TickTime Ticks(std::int64_t inTicks)
{
	return TickTime::FromTicks(inTicks);
}

struct Case
{
	char const* mName;
	SN::InterfaceRef<VX::ITimeTransform> mTransform;
	TickTime mTime;
	TickTime mExpected;
};

SN::InterfaceRef<VX::ITimeTransform> MakeSpeed(double inSpeed, std::int64_t inOffset = 0)
{
	return zorvcore::classref::MakeObject<SpeedTimeTransform>(inSpeed, Ticks(inOffset));
}

SN::InterfaceRef<VX::ITimeTransform> MakeKeyframed(std::vector<TimeKey> inKeys)
{
	return zorvcore::classref::MakeObject<KeyframedTimeTransform>(std::move(inKeys));
}

TEST(TimeTransforms, TimesComeFromWhereTheyShould)
{
	auto const identity =
		SN::InterfaceRef<VX::ITimeTransform>(zorvcore::classref::MakeObject<IdentityTimeTransform>());
	// Forward at half speed, back at double speed, then standing.
	auto const there = MakeKeyframed({{Ticks(100), Ticks(1000)}, {Ticks(200), Ticks(1050)},
		{Ticks(300), Ticks(850)}, {Ticks(301), Ticks(850)}});
	auto const single = MakeKeyframed({{Ticks(7), Ticks(70)}});
	// A day against a day and one tick: the product of both needs more than 64 bits.
	constexpr std::int64_t kDay = 86400 * zorvmediatypes::kTicksPerSecond;
	auto const day = MakeKeyframed({{Ticks(0), Ticks(0)}, {Ticks(kDay), Ticks(kDay + 1)}});
	Case const cases[] = {
		{"identity", identity, Ticks(-123456789012345), Ticks(-123456789012345)},
		{"normal speed keeps every tick", MakeSpeed(1.0), SN::kTimeMax, SN::kTimeMax},
		{"normal speed, offset", MakeSpeed(1.0, -30), Ticks(10), Ticks(-20)},
		{"half, rounded away from zero", MakeSpeed(0.5, 100), Ticks(5), Ticks(103)},
		{"backwards", MakeSpeed(-2.0, 1000), Ticks(30), Ticks(940)},
		{"backwards before the start", MakeSpeed(-2.0, 1000), Ticks(-30), Ticks(1060)},
		{"standing", MakeSpeed(0.0, 12), Ticks(999), Ticks(12)},

		{"first key", there, Ticks(100), Ticks(1000)},
		{"between", there, Ticks(150), Ticks(1025)},
		{"to the nearest tick, halves up", there, Ticks(151), Ticks(1026)},
		{"before the first key", there, Ticks(40), Ticks(970)},
		{"before it, halves away from zero", there, Ticks(99), Ticks(999)},
		{"at the turn", there, Ticks(200), Ticks(1050)},
		{"backwards", there, Ticks(250), Ticks(950)},
		{"last keys", there, Ticks(300), Ticks(850)},
		{"behind the last key", there, Ticks(100000), Ticks(850)},

		{"single key", single, Ticks(7), Ticks(70)},
		{"before a single key", single, Ticks(-1000), Ticks(-937)},
		{"behind a single key", single, Ticks(1000), Ticks(1063)},

		{"end of the day", day, Ticks(kDay), Ticks(kDay + 1)},
		{"before noon", day, Ticks(kDay / 2 - 1), Ticks(kDay / 2 - 1)},
		{"noon", day, Ticks(kDay / 2), Ticks(kDay / 2 + 1)},
		{"four days", day, Ticks(4 * kDay), Ticks(4 * kDay + 4)},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		EXPECT_EQ(test.mTransform->GetTime(test.mTime).GetTicks(), test.mExpected.GetTicks());
	}
}

TEST(TimeTransforms, WhatIsNoTransformIsRefused)
{
	EXPECT_THROW(MakeSpeed(std::numeric_limits<double>::quiet_NaN()), HostError);
	EXPECT_THROW(MakeSpeed(std::numeric_limits<double>::infinity()), HostError);
	EXPECT_THROW(MakeKeyframed({}), HostError);
	EXPECT_THROW(MakeKeyframed({{Ticks(1), Ticks(1)}, {Ticks(1), Ticks(2)}}), HostError);
	EXPECT_THROW(MakeKeyframed({{Ticks(2), Ticks(1)}, {Ticks(1), Ticks(2)}}), HostError);
}

} // namespace SonaroHost::Testing::TimeTransformsTest
