#pragma once

#include <string>

namespace SonaroHost
{

// A number for messages, with at most six significant digits: "0.5", "29.97", "nan".
std::string FormatNumber(double inNumber);
// As many digits as it takes to give this number and no other: "10.0000001".
std::string FormatAllDigits(double inNumber);

// "1 sample", "2 samples". inNoun: in the singular.
template <class Integer>
std::string FormatCount(Integer inCount, std::string const& inNoun)
{
	return std::to_string(inCount) + " " + inNoun + (inCount == 1 ? "" : "s");
}

} // namespace SonaroHost
