#pragma once

#include "Otio/Json/JsonValue.h"

#include <optional>
#include <string_view>

namespace SonaroHost::Otio
{

// A number as programs write it: as a number, in a text, as "1/2", or as true and false for 1 and 0.
struct LooseNumber
{
	double GetValue() const { return mNumerator / mDenominator; }

	double mNumerator = 0.0;
	// The denominator is at least 1.
	double mDenominator = 1.0;
	bool mIsFraction = false;
};

// Nothing for anything else, and for numbers beyond the limit of times.
std::optional<LooseNumber> ParseLooseNumber(JsonValue const& inValue);
std::optional<double> ParseDecimal(std::string_view inText);

} // namespace SonaroHost::Otio
