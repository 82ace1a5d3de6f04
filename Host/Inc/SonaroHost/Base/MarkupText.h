#pragma once

#include <string>
#include <string_view>

namespace SonaroHost
{

// A text for HTML and SVG, between elements and in quoted attributes: it cannot end them, and what is no text in them,
// such as control characters and bytes that are no UTF-8, is written out as MakePrintable does.
std::string EscapeMarkup(std::string_view inText);

} // namespace SonaroHost
