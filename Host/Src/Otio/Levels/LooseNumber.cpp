#include "LooseNumber.h"

#include "SonaroHost/Otio/Limits.h"

#include <charconv>
#include <cmath>

namespace SonaroHost::Otio
{

namespace
{

std::optional<LooseNumber> ParseText(std::string_view inText)
{
	std::size_t const slash = inText.find('/');
	if (slash == std::string_view::npos)
	{
		auto const number = ParseDecimal(inText);
		return number ? std::optional(LooseNumber{*number}) : std::nullopt;
	}
	auto const numerator = ParseDecimal(inText.substr(0, slash));
	auto const denominator = ParseDecimal(inText.substr(slash + 1));
	bool const isUsable = numerator && denominator && *denominator >= 1.0;
	return isUsable ? std::optional(LooseNumber{*numerator, *denominator, true}) : std::nullopt;
}

} // namespace

std::optional<double> ParseDecimal(std::string_view inText)
{
	double number = 0.0;
	auto const [end, error] = std::from_chars(inText.data(), inText.data() + inText.size(), number);
	bool const isWhole = error == std::errc() && end == inText.data() + inText.size();
	return isWhole && std::abs(number) <= kMaxSeconds ? std::optional(number) : std::nullopt;
}

std::optional<LooseNumber> ParseLooseNumber(JsonValue const& inValue)
{
	switch (inValue.GetType())
	{
	case JsonValue::Type::kNumber:
	{
		bool const isUsable = std::abs(inValue.GetNumber()) <= kMaxSeconds;
		return isUsable ? std::optional(LooseNumber{inValue.GetNumber()}) : std::nullopt;
	}
	case JsonValue::Type::kBool:
		return LooseNumber{inValue.GetBool() ? 1.0 : 0.0};
	case JsonValue::Type::kString:
		return ParseText(inValue.GetString());
	default:
		return std::nullopt;
	}
}

} // namespace SonaroHost::Otio
