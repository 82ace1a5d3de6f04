#pragma once

#include "zorvcore/Export.h"
#include "zorvmediatypes/FrameRate.h"

#include <boost/rational.hpp>

#include <compare>
#include <cstdint>
#include <limits>

namespace zorvmediatypes
{

// A position or a length on a time line: a signed count of ticks, 254016000000 a second. Time 0 is the
// origin; times before it are negative and valid. Arithmetic saturates at the ends of 64 bits.
class ZORV_API TickTime
{
public:
	constexpr TickTime() = default;
	// So many frames of that rate; no time at all (0) for a rate that cannot be counted in.
	TickTime(long long inFrames, FrameRate const& inFrameRate) { AddFrames(inFrames, inFrameRate); }

	static constexpr TickTime FromTicks(std::int64_t inTicks)
	{
		TickTime time;
		time.mTicks = inTicks;
		return time;
	}
	// Nearest tick; saturates.
	static TickTime FromSeconds(double inSeconds);

	constexpr std::int64_t GetTicks() const { return mTicks; }
	double GetSeconds() const;

	TickTime operator+(TickTime const& inOther) const
	{
		std::int64_t sum = 0;
		bool const isBeyond = __builtin_add_overflow(mTicks, inOther.mTicks, &sum);
		return FromTicks(isBeyond ? GetEnd(inOther.mTicks < 0) : sum);
	}
	TickTime operator-(TickTime const& inOther) const
	{
		std::int64_t difference = 0;
		bool const isBeyond = __builtin_sub_overflow(mTicks, inOther.mTicks, &difference);
		return FromTicks(isBeyond ? GetEnd(inOther.mTicks > 0) : difference);
	}
	TickTime operator-() const;
	TickTime& operator+=(TickTime const& inOther) { return *this = *this + inOther; }
	TickTime& operator-=(TickTime const& inOther) { return *this = *this - inOther; }

	// Exact product or quotient rounded to the nearest tick, halves away from zero; infinities and
	// what lies beyond 64 bits saturate, not-a-number gives kTimeNotATime. A time of 0 times anything
	// finite, and 0 divided by 0, is 0.
	TickTime operator*(double inFactor) const;
	TickTime operator/(double inDivisor) const;
	TickTime operator*(int inFactor) const;
	TickTime& operator*=(double inFactor) { return *this = *this * inFactor; }
	TickTime& operator/=(double inDivisor) { return *this = *this / inDivisor; }

	// The ratio of two times, by IEEE division.
	double operator/(TickTime const& inDivisor) const;

	// Later by so many frames; unchanged for a rate that cannot be counted in.
	TickTime& AddFrames(long long inFrames, FrameRate const& inFrameRate)
	{
		std::int64_t length = 0;
		if (!inFrameRate.IsCountable())
		{
			return *this;
		}
		if (__builtin_mul_overflow(inFrames, inFrameRate.GetTicksPerFrame(), &length))
		{
			// Only far beyond any time line; both terms together may still be within 64 bits.
			return AddFramesWidely(inFrames, inFrameRate);
		}
		return *this += FromTicks(length);
	}

	// Moves the time down onto a frame boundary of that rate: 4.5 frames become 4, -4.5 become -5. A
	// rate that cannot be counted in leaves it as it is.
	TickTime& AlignToFrame(FrameRate const& inFrameRate);

	// The number of the frame that holds this time, counted down like AlignToFrame; 0 for a rate that
	// cannot be counted in. The 32-bit form saturates.
	int ToFrame32(FrameRate const& inFrameRate) const;
	long long ToFrame64(FrameRate const& inFrameRate) const;

	friend constexpr auto operator<=>(TickTime const&, TickTime const&) = default;

private:
	static constexpr std::int64_t GetEnd(bool inNegative)
	{
		return inNegative ? std::numeric_limits<std::int64_t>::min()
						  : std::numeric_limits<std::int64_t>::max();
	}
	TickTime& AddFramesWidely(long long inFrames, FrameRate const& inFrameRate);

	std::int64_t mTicks = 0;
};

inline constexpr TickTime kTimeZero{};
// 360000 seconds, the end of any time line; its negative is the start.
inline constexpr TickTime kTimeMax = TickTime::FromTicks(91445760000000000);
// -400000 seconds, a position that is none.
inline constexpr TickTime kTime_Invalid = TickTime::FromTicks(-101606400000000000);
inline constexpr TickTime kTimeNotATime = TickTime::FromTicks(0x7FFFFFFFFFFFFFFF);

// The time in seconds as an exact fraction.
ZORV_API boost::rational<long long> TimeToRatioTime(TickTime inTime);

} // namespace zorvmediatypes
