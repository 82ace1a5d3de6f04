#pragma once

#include <string>

namespace SonaroHost
{

// A number for messages, with at most six significant digits: "0.5", "29.97", "nan".
std::string FormatNumber(double inNumber);

} // namespace SonaroHost
