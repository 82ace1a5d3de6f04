#include "Timecode.h"

#include "SonaroHost/Otio/RationalTime.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace SonaroHost::Otio
{

namespace
{

constexpr std::string_view kSeparators = ":;,";

struct Fields
{
	std::array<std::int64_t, 4> mValues{};
	bool mDrops = false;
};

std::optional<Fields> Split(std::string_view inText)
{
	Fields fields;
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
			fields.mValues[i] < 0)
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

} // namespace

bool IsTimecode(std::string_view inText)
{
	return Split(inText).has_value();
}

std::optional<Ratio> ParseTimecode(std::string_view inText, double inRate)
{
	auto const fields = Split(inText);
	Ratio const rate = ToExactRate(inRate);
	std::int64_t const nominal = std::max<std::int64_t>(1, std::llround(std::ceil(rate.ToDouble() - 1.0e-9)));
	if (!fields || fields->mValues[1] >= 60 || fields->mValues[2] >= 60 || fields->mValues[3] >= nominal)
	{
		return std::nullopt;
	}
	auto const [hours, minutes, seconds, frames] = fields->mValues;
	std::int64_t count = ((hours * 60 + minutes) * 60 + seconds) * nominal + frames;
	if (fields->mDrops)
	{
		// Two numbers of 30, four of 60, at the start of each minute but every tenth.
		std::int64_t const dropped = nominal / 15;
		bool const canDrop = (nominal == 30 || nominal == 60) && rate < Ratio(nominal);
		if (!canDrop || (minutes % 10 != 0 && seconds == 0 && frames < dropped))
		{
			return std::nullopt;
		}
		std::int64_t const allMinutes = hours * 60 + minutes;
		count -= dropped * (allMinutes - allMinutes / 10);
	}
	return Ratio(count) / rate;
}

} // namespace SonaroHost::Otio
