#pragma once

#include <string>
#include <string_view>

namespace SonaroHost
{

// How wide a text is at most in the usual sans-serif fonts, at a size in pixels: estimated by its characters, so that a
// picture is the same on every machine. inText is UTF-8 without control characters.
double EstimateTextWidth(std::string_view inText, double inSize);

// A text for a picture: as MakePrintable leaves it, and cut with an ellipsis where it is wider. Empty where there is no
// room for three of its characters and the ellipsis.
std::string FitText(std::string_view inText, double inSize, double inWidth);

} // namespace SonaroHost
