#include "Timecode.h"

#include "SonaroHost/Otio/RationalTime.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace SonaroHost::Otio
{

namespace
{

constexpr std::string_view kSeparators = ":;,";

struct Fields
{
	bool mIsNegative = false;
	std::array<std::int64_t, 4> mValues{};
	bool mDrops = false;
};

std::optional<Fields> Split(std::string_view inText)
{
	Fields fields;
	fields.mIsNegative = inText.starts_with('-');
	inText.remove_prefix(fields.mIsNegative ? 1 : 0);
	for (std::size_t i = 0; i < fields.mValues.size(); ++i)
	{
		std::size_t const end = inText.find_first_of(kSeparators);
		bool const isLast = i + 1 == fields.mValues.size();
		if (isLast != (end == std::string_view::npos))
		{
			return std::nullopt;
		}
		std::string_view const digits = inText.substr(0, end);
		auto const [stop, error] =
			std::from_chars(digits.data(), digits.data() + digits.size(), fields.mValues[i]);
		if (error != std::errc() || stop != digits.data() + digits.size() || digits.size() > 6 ||
			digits.front() == '-')
		{
			return std::nullopt;
		}
		if (!isLast)
		{
			fields.mDrops = inText[end] != ':';
			inText.remove_prefix(end + 1);
		}
	}
	return fields;
}

// How frames are counted at a rate.
struct Counting
{
	explicit Counting(double inRate)
		: mRate(ToExactRate(inRate)),
		  mNominal(std::max<std::int64_t>(1, std::llround(std::ceil(mRate.ToDouble() - 1.0e-9))))
	{
	}

	// Whether numbers can be left out.
	bool CanDrop() const { return (mNominal == 30 || mNominal == 60) && mRate < Ratio(mNominal); }
	// Two of 30, four of 60, at the start of each minute but every tenth.
	std::int64_t GetDropped() const { return mNominal / 15; }

	Ratio mRate;
	// Frames that a second is counted to have.
	std::int64_t mNominal;
};

} // namespace

bool IsTimecode(std::string_view inText)
{
	return Split(inText).has_value();
}

bool CanDropFrames(double inRate)
{
	return Counting(inRate).CanDrop();
}

std::optional<Ratio> ParseTimecode(std::string_view inText, double inRate)
{
	auto const fields = Split(inText);
	Counting const counting(inRate);
	if (!fields || fields->mValues[1] >= 60 || fields->mValues[2] >= 60 ||
		fields->mValues[3] >= counting.mNominal)
	{
		return std::nullopt;
	}
	auto const [hours, minutes, seconds, frames] = fields->mValues;
	std::int64_t count = ((hours * 60 + minutes) * 60 + seconds) * counting.mNominal + frames;
	if (fields->mDrops)
	{
		std::int64_t const dropped = counting.GetDropped();
		if (!counting.CanDrop() || (minutes % 10 != 0 && seconds == 0 && frames < dropped))
		{
			return std::nullopt;
		}
		std::int64_t const allMinutes = hours * 60 + minutes;
		count -= dropped * (allMinutes - allMinutes / 10);
	}
	return Ratio(fields->mIsNegative ? -count : count) / counting.mRate;
}

std::string FormatTimecode(Ratio const& inTime, double inRate)
{
	Counting const counting(inRate);
	std::int64_t const signedCount = (inTime * counting.mRate).Round();
	std::int64_t count = std::abs(signedCount);
	if (counting.CanDrop())
	{
		std::int64_t const dropped = counting.GetDropped();
		std::int64_t const framesOfMinute = 60 * counting.mNominal - dropped;
		std::int64_t const framesOfTen = 10 * framesOfMinute + dropped;
		std::int64_t const rest = count % framesOfTen;
		// The first minute of ten has all its numbers.
		std::int64_t const minutes = std::max<std::int64_t>(0, rest - dropped) / framesOfMinute;
		count += dropped * (9 * (count / framesOfTen) + minutes);
	}
	std::int64_t const seconds = count / counting.mNominal;
	std::array<char, 64> text{};
	std::snprintf(text.data(), text.size(), "%s%02lld:%02lld:%02lld%c%02lld", signedCount < 0 ? "-" : "",
		static_cast<long long>(seconds / 3600), static_cast<long long>(seconds / 60 % 60),
		static_cast<long long>(seconds % 60), counting.CanDrop() ? ';' : ':',
		static_cast<long long>(count % counting.mNominal));
	return text.data();
}

} // namespace SonaroHost::Otio
