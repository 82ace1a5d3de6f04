#pragma once

#include "zorvcore/Export.h"

#include <cstdint>

namespace zorvmediatypes
{

// Ticks in a second. One sample is a whole number of ticks at all common rates.
inline constexpr std::int64_t kTicksPerSecond = 254016000000;

// A rate, held as ticks per frame; for audio a frame is one sample of all channels.
//
// Operators act on the rate, not on the count: 48000 Hz times 2 is 96000 Hz. They round the ticks to
// the nearest whole count; a factor of 0, a factor that is not a number, an overflow and an invalid
// rate give the invalid rate.
class ZORV_API FrameRate
{
public:
	// The invalid rate.
	constexpr FrameRate() = default;
	constexpr explicit FrameRate(std::int64_t inTicksPerFrame)
		: mTicksPerFrame(inTicksPerFrame)
	{
	}

	// The rate nearest to so many samples a second; invalid for 0 and below.
	static FrameRate FromSamplesPerSecond(double inSamplesPerSecond);

	constexpr std::int64_t GetTicksPerFrame() const { return mTicksPerFrame; }
	constexpr bool IsValid() const { return mTicksPerFrame != kInvalidTicks; }

	// Whether times can be counted in frames of this rate: valid and above 0.
	constexpr bool IsCountable() const { return IsValid() && mTicksPerFrame > 0; }

	// 2.54016e11 divided by the ticks; 0.0 for the invalid rate and for 0 ticks.
	double GetSamplesPerSecond() const;

	FrameRate operator*(double inFactor) const;
	FrameRate operator*(int inFactor) const { return *this * static_cast<double>(inFactor); }
	FrameRate operator/(double inDivisor) const;
	FrameRate& operator*=(double inFactor) { return *this = *this * inFactor; }

	friend constexpr bool operator==(FrameRate const&, FrameRate const&) = default;

private:
	static constexpr std::int64_t kInvalidTicks = 0x7FFFFFFFFFFFFFFF;

	std::int64_t mTicksPerFrame = kInvalidTicks;
};

inline constexpr FrameRate kFrameRate_Invalid{};

} // namespace zorvmediatypes
