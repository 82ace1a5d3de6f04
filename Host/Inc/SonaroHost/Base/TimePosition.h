#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace SonaroHost
{

// A time as a person gives it: in seconds or in samples. It becomes exact once the rate is known.
class TimePosition
{
public:
	// Time 0.
	constexpr TimePosition() = default;

	static constexpr TimePosition FromSamples(std::int64_t inSamples)
	{
		return TimePosition(0, 0, inSamples);
	}

	// Reads "12.5" (seconds), "1:02.5" (minutes), "1:00:02.5" (hours) or "48000s" (samples). Nothing for
	// any other text, a negative time among them. A fraction counts to the nanosecond.
	static std::optional<TimePosition> Parse(std::string_view inText);

	// The nearest sample at that rate, halves up.
	std::int64_t ToSamples(int inSampleRate) const;

private:
	constexpr TimePosition(std::int64_t inSeconds, std::int64_t inNanoseconds, std::int64_t inSamples)
		: mSeconds(inSeconds),
		  mNanoseconds(inNanoseconds),
		  mSamples(inSamples)
	{
	}

	// The sum of the three.
	std::int64_t mSeconds = 0;
	std::int64_t mNanoseconds = 0;
	std::int64_t mSamples = 0;
};

// "1:02:03.500": hours only where there are any, always minutes, to the nearest millisecond.
std::string FormatTime(std::int64_t inSamples, int inSampleRate);

} // namespace SonaroHost
