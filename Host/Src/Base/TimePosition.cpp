#include "SonaroHost/Base/TimePosition.h"

#include <array>
#include <charconv>
#include <cstdio>

namespace SonaroHost
{

namespace
{

constexpr std::int64_t kNanosecondsPerSecond = 1000000000;
// Far beyond any file, and small enough that no product with a sample rate overflows.
constexpr std::int64_t kLargestNumber = 1000000;
constexpr std::int64_t kLargestSampleNumber = 1000000000000000;

// The whole of inText as a number of plain digits.
std::optional<std::int64_t> ParseDigits(std::string_view inText, std::int64_t inLargest)
{
	std::int64_t value = 0;
	if (inText.empty() || inText.find_first_not_of("0123456789") != std::string_view::npos)
	{
		return std::nullopt;
	}
	auto const [end, error] = std::from_chars(inText.data(), inText.data() + inText.size(), value);
	if (error != std::errc() || value > inLargest)
	{
		return std::nullopt;
	}
	return value;
}

// The digits after a decimal point, in nanoseconds.
std::optional<std::int64_t> ParseFraction(std::string_view inDigits)
{
	std::string digits(inDigits.substr(0, 9));
	if (inDigits.find_first_not_of("0123456789") != std::string_view::npos)
	{
		return std::nullopt;
	}
	digits.resize(9, '0');
	return ParseDigits(digits, kNanosecondsPerSecond);
}

} // namespace

std::optional<TimePosition> TimePosition::Parse(std::string_view inText)
{
	if (inText.ends_with('s'))
	{
		inText.remove_suffix(1);
		auto const samples = ParseDigits(inText, kLargestSampleNumber);
		return samples ? std::optional(FromSamples(*samples)) : std::nullopt;
	}

	std::int64_t nanoseconds = 0;
	if (std::size_t const point = inText.find('.'); point != std::string_view::npos)
	{
		auto const fraction = ParseFraction(inText.substr(point + 1));
		// A point needs a digit on one side at least.
		if (!fraction || inText.size() == 1)
		{
			return std::nullopt;
		}
		nanoseconds = *fraction;
		inText = inText.substr(0, point);
		if (inText.empty())
		{
			inText = "0";
		}
	}

	std::int64_t seconds = 0;
	for (int fields = 1;; ++fields)
	{
		std::size_t const colon = inText.find(':');
		bool const isFirst = fields == 1;
		auto const field = ParseDigits(inText.substr(0, colon), isFirst ? kLargestNumber : 59);
		if (!field || fields > 3)
		{
			return std::nullopt;
		}
		seconds = seconds * 60 + *field;
		if (colon == std::string_view::npos)
		{
			return TimePosition(seconds, nanoseconds, 0);
		}
		inText.remove_prefix(colon + 1);
	}
}

std::int64_t TimePosition::ToSamples(int inSampleRate) const
{
	std::int64_t const fraction =
		(mNanoseconds * inSampleRate + kNanosecondsPerSecond / 2) / kNanosecondsPerSecond;
	return mSeconds * inSampleRate + fraction + mSamples;
}

std::string FormatTime(std::int64_t inSamples, int inSampleRate)
{
	std::int64_t const wholeSeconds = inSamples / inSampleRate;
	std::int64_t const rest = inSamples % inSampleRate;
	std::int64_t const milliseconds = wholeSeconds * 1000 + (rest * 1000 + inSampleRate / 2) / inSampleRate;
	auto const hours = static_cast<long long>(milliseconds / 3600000);
	int const minutes = static_cast<int>(milliseconds / 60000 % 60);
	int const seconds = static_cast<int>(milliseconds / 1000 % 60);
	int const remainder = static_cast<int>(milliseconds % 1000);

	std::array<char, 48> text{};
	if (hours > 0)
	{
		std::snprintf(text.data(), text.size(), "%lld:%02d:%02d.%03d", hours, minutes, seconds, remainder);
	}
	else
	{
		std::snprintf(text.data(), text.size(), "%d:%02d.%03d", minutes, seconds, remainder);
	}
	return text.data();
}

} // namespace SonaroHost
