#include "zorvmediatypes/TickTime.h"

#include "Support/Common.h"
#include "zorvmediatypes/FrameRate.h"

namespace zorvmediatypes::TickTimeTest
{

constexpr FrameRate k48000Hz{5292000};
constexpr FrameRate k44100Hz{5760000};
constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kSmallest = std::numeric_limits<std::int64_t>::min();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TickTime Ticks(std::int64_t inTicks)
{
	return TickTime::FromTicks(inTicks);
}

TEST(TickTime, FramesAreCountedDownAlsoBelowZero)
{
	struct Case
	{
		char const* mName;
		TickTime mTime;
		FrameRate mRate;
		long long mFrames;
		TickTime mAligned;
	};
	Case const cases[] = {
		{"zero", Ticks(0), k48000Hz, 0, Ticks(0)},
		{"on a boundary", TickTime(7, k48000Hz), k48000Hz, 7, TickTime(7, k48000Hz)},
		{"4.5 frames", Ticks(5292000 * 9 / 2), k48000Hz, 4, TickTime(4, k48000Hz)},
		{"-4.5 frames", Ticks(-5292000 * 9 / 2), k48000Hz, -5, TickTime(-5, k48000Hz)},
		{"-4 frames", TickTime(-4, k48000Hz), k48000Hz, -4, TickTime(-4, k48000Hz)},
		{"a tick below zero", Ticks(-1), k48000Hz, -1, TickTime(-1, k48000Hz)},
		{"a second at 44100", Ticks(kTicksPerSecond), k44100Hz, 44100, Ticks(kTicksPerSecond)},
		{"rate 0", Ticks(123), FrameRate(0), 0, Ticks(123)},
		{"rate below 0", Ticks(123), FrameRate(-5), 0, Ticks(123)},
		{"invalid rate", Ticks(-123), FrameRate(), 0, Ticks(-123)},
		{"the smallest", Ticks(kSmallest), FrameRate(3), kSmallest / 3 - 1, Ticks(kSmallest)},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		TickTime aligned = test.mTime;
		EXPECT_EQ(test.mTime.ToFrame64(test.mRate), test.mFrames);
		EXPECT_EQ(aligned.AlignToFrame(test.mRate), test.mAligned);
	}
	EXPECT_EQ(kTimeMax.ToFrame32(FrameRate(1)), std::numeric_limits<int>::max());
	EXPECT_EQ((-kTimeMax).ToFrame32(FrameRate(1)), std::numeric_limits<int>::min());
	EXPECT_EQ(Ticks(-1).ToFrame32(k48000Hz), -1);
	EXPECT_EQ(TickTime(48000, k48000Hz), Ticks(254016000000));
	EXPECT_EQ(TickTime(48000, FrameRate()), kTimeZero);
}

TEST(TickTime, ProductsAndQuotientsAreRoundedOnceAndSaturate)
{
	struct Case
	{
		char const* mName;
		std::int64_t mTicks;
		double mFactor;
		std::int64_t mProduct;
		std::int64_t mQuotient;
	};
	Case const cases[] = {
		{"one is exact beyond 53 bits", kLargest - 1, 1.0, kLargest - 1, kLargest - 1},
		{"minus one", kLargest - 1, -1.0, 1 - kLargest, 1 - kLargest},
		{"halves round away from zero", 5, 0.5, 3, 10},
		{"also below zero", -5, 0.5, -3, -10},
		{"thirds", 10, 3.0, 30, 3},
		{"two thirds", 20, 3.0, 60, 7},
		{"large quotient", 91445760000000001, 2.0, 182891520000000002, 45722880000000001},
		{"infinity", 5, kInfinity, kLargest, 0},
		{"minus infinity", 5, -kInfinity, kSmallest, 0},
		{"minus infinity twice", -5, -kInfinity, kLargest, 0},
		{"zero", 5, 0.0, 0, kLargest},
		{"zero below zero", -5, 0.0, 0, kSmallest},
		{"zero times infinity", 0, kInfinity, 0, 0},
		{"zero by zero", 0, 0.0, 0, 0},
		{"not a number", 5, kNaN, kLargest, kLargest},
		{"huge", 5, 1e300, kLargest, 0},
		{"tiny", 5, 1e-300, 0, kLargest},
		{"denormal", -5, 5e-324, 0, kSmallest},
		{"just beyond", kLargest / 2 + 2, 2.0, kLargest, kLargest / 4 + 2},
		{"the smallest", kSmallest, 1.0, kSmallest, kSmallest},
		{"the smallest turned round", kSmallest, -1.0, kLargest, kLargest},
	};
	for (Case const& test : cases)
	{
		SCOPED_TRACE(test.mName);
		EXPECT_EQ((Ticks(test.mTicks) * test.mFactor).GetTicks(), test.mProduct);
		EXPECT_EQ((Ticks(test.mTicks) / test.mFactor).GetTicks(), test.mQuotient);
	}
	EXPECT_EQ((kTimeMax * 1000000).GetTicks(), kLargest);
	EXPECT_EQ((kTimeMax * -1000000).GetTicks(), kSmallest);
	EXPECT_EQ(TickTime(3, k48000Hz) / TickTime(2, k48000Hz), 1.5);
}

TEST(TickTime, RandomProductsAgreeWithExtendedPrecision)
{
	if constexpr (std::numeric_limits<long double>::digits < 64)
	{
		return;
	}
	std::mt19937_64 random(4);
	for (int trial = 0; trial < 100000; ++trial)
	{
		// Products of 31 and 32 significant bits are exact in the 64 of the reference.
		auto const ticks = static_cast<std::int64_t>(random() >> 33) - (std::int64_t(1) << 30);
		double const factor =
			std::ldexp(static_cast<double>(random() >> 32), static_cast<int>(random() % 40) - 36);
		long double const exact = static_cast<long double>(ticks) * static_cast<long double>(factor);
		if (std::abs(exact) < 0x1p62L)
		{
			ASSERT_EQ((Ticks(ticks) * factor).GetTicks(), std::llround(exact)) << ticks << " * " << factor;
		}
		if (factor > 1e-6)
		{
			// A quotient is right when no neighbour is nearer.
			std::int64_t const quotient = (Ticks(ticks) / factor).GetTicks();
			long double const error =
				std::abs(static_cast<long double>(ticks) -
						 static_cast<long double>(quotient) * static_cast<long double>(factor));
			ASSERT_LE(error, static_cast<long double>(factor) / 2 * (1 + 1e-15L)) << ticks << " / " << factor;
		}
	}
}

TEST(TickTime, SumsSaturate)
{
	EXPECT_EQ(Ticks(kLargest) + Ticks(1), Ticks(kLargest));
	EXPECT_EQ(Ticks(kSmallest) - Ticks(1), Ticks(kSmallest));
	EXPECT_EQ(-Ticks(kSmallest), Ticks(kLargest));
	EXPECT_EQ(Ticks(5) + Ticks(-7), Ticks(-2));
	EXPECT_EQ(TickTime(0, k48000Hz).AddFrames(kLargest, k48000Hz), Ticks(kLargest));
	EXPECT_EQ(TickTime::FromSeconds(1e300), Ticks(kLargest));
	EXPECT_EQ(TickTime::FromSeconds(-0.5).GetTicks(), -kTicksPerSecond / 2);
	EXPECT_EQ(TimeToRatioTime(TickTime(1, k44100Hz)), boost::rational<long long>(1, 44100));
}

TEST(FrameRate, OperatorsActOnTheRate)
{
	EXPECT_EQ(k48000Hz.GetSamplesPerSecond(), 48000.0);
	EXPECT_EQ(FrameRate().GetSamplesPerSecond(), 0.0);
	EXPECT_EQ(FrameRate(0).GetSamplesPerSecond(), 0.0);
	EXPECT_EQ(FrameRate::FromSamplesPerSecond(44100.0), k44100Hz);
	EXPECT_EQ(FrameRate::FromSamplesPerSecond(0.0), FrameRate());
	EXPECT_EQ(FrameRate::FromSamplesPerSecond(-48000.0), FrameRate());
	EXPECT_EQ((k48000Hz * 2).GetTicksPerFrame(), 2646000);
	EXPECT_EQ((k48000Hz * 0.5).GetTicksPerFrame(), 10584000);
	EXPECT_EQ((k48000Hz / 2.0).GetTicksPerFrame(), 10584000);
	EXPECT_EQ((FrameRate(7) * 2).GetTicksPerFrame(), 4) << "3.5 ticks round to the nearest";
	EXPECT_EQ(k48000Hz * 0.0, FrameRate());
	EXPECT_EQ(k48000Hz / 0.0, FrameRate());
	EXPECT_EQ(k48000Hz * kNaN, FrameRate());
	EXPECT_EQ(k48000Hz * 1e-300, FrameRate());
	EXPECT_EQ(FrameRate() * 2, FrameRate());
	EXPECT_EQ(FrameRate() / 2.0, FrameRate());
}

} // namespace zorvmediatypes::TickTimeTest
