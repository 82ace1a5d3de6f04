#include "ByteRange.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>

namespace SonaroCommand::Serve
{

namespace
{

std::string_view Trim(std::string_view inText)
{
	while (!inText.empty() && (inText.front() == ' ' || inText.front() == '\t'))
	{
		inText.remove_prefix(1);
	}
	while (!inText.empty() && (inText.back() == ' ' || inText.back() == '\t'))
	{
		inText.remove_suffix(1);
	}
	return inText;
}

// Digits alone; numbers that are too large are the largest.
std::optional<std::int64_t> ParseDigits(std::string_view inText)
{
	bool const isNumber = !inText.empty() && inText.find_first_not_of("0123456789") == std::string_view::npos;
	if (!isNumber)
	{
		return std::nullopt;
	}
	std::int64_t number = 0;
	auto const result = std::from_chars(inText.data(), inText.data() + inText.size(), number);
	return result.ec == std::errc() ? number : std::numeric_limits<std::int64_t>::max();
}

} // namespace

ByteRange ChooseByteRange(std::string_view inField, std::int64_t inLength)
{
	using Kind = ByteRange::Kind;
	ByteRange const whole{Kind::kWhole, 0, inLength};
	constexpr std::string_view kUnit = "bytes=";
	std::string_view const field = Trim(inField);
	if (!field.starts_with(kUnit))
	{
		return whole;
	}
	std::string_view const range = Trim(field.substr(kUnit.size()));
	std::size_t const dash = range.find('-');
	if (dash == std::string_view::npos)
	{
		return whole;
	}
	auto const first = ParseDigits(range.substr(0, dash));
	auto const last = ParseDigits(range.substr(dash + 1));
	bool const isSuffix = dash == 0 && last;
	bool const isOpen = first && dash + 1 == range.size();
	if (isSuffix)
	{
		return *last == 0 || inLength == 0
				   ? ByteRange{Kind::kNone, 0, 0}
				   : ByteRange{Kind::kPart, inLength - std::min(*last, inLength), inLength};
	}
	if (!first || (!isOpen && (!last || *last < *first)))
	{
		return whole;
	}
	if (*first >= inLength)
	{
		return {Kind::kNone, 0, 0};
	}
	return {Kind::kPart, *first, isOpen ? inLength : std::min(*last, inLength - 1) + 1};
}

std::string FormatEntityTag(std::string const& inTag, bool inIsWeak)
{
	return (inIsWeak ? "W/\"" : "\"") + inTag + "\"";
}

bool NamesTag(std::string_view inField, std::string const& inTag)
{
	std::string const quoted = FormatEntityTag(inTag, false);
	for (std::string_view rest = inField; !rest.empty();)
	{
		std::size_t const comma = std::min(rest.find(','), rest.size());
		std::string_view entry = Trim(rest.substr(0, comma));
		if (entry.starts_with("W/"))
		{
			entry.remove_prefix(2);
		}
		if (entry == quoted || entry == "*")
		{
			return true;
		}
		rest.remove_prefix(std::min(comma + 1, rest.size()));
	}
	return false;
}

bool AllowsRange(std::string_view inField, std::string const& inEntityTag)
{
	return inField.empty() || (Trim(inField) == inEntityTag && !inEntityTag.starts_with("W/"));
}

} // namespace SonaroCommand::Serve
