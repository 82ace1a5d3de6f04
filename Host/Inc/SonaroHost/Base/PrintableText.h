#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace SonaroHost
{

// A text from a file for a terminal: whatever could move its cursor, change its colours, break the line or turn
// the direction of writing is written out, as "\x1b", "\u009b" or "\u202e"; so are bytes that are no UTF-8. All
// else stays as it is.
std::string MakePrintable(std::string_view inText);

// The same for text of several lines, whose line ends stay.
std::string MakePrintableLines(std::string_view inText);

// A name within a message, printable and in double quotes.
std::string QuoteName(std::string_view inName);

// A path as text: its bytes as they are, or UTF-8 where the system has paths of UTF-16. Surrogates without their partner
// become U+FFFD.
std::string GetPathText(std::filesystem::path const& inPath);

// The text with the letters A to Z in lower case.
std::string ToLower(std::string inText);
// The ending of a file's name in lower case, with its dot; empty for none.
std::string GetLowerEnding(std::filesystem::path const& inPath);

// The first inLongest bytes of a text, fewer where that would split a character of UTF-8.
std::string_view CutText(std::string_view inText, std::size_t inLongest);

// A text of more than inLongest bytes with "..." for its middle, so that it is no longer. Characters of UTF-8 stay whole.
std::string ShortenMiddle(std::string_view inText, std::size_t inLongest);

// A text for HTML and SVG, between elements and in quoted attributes: it cannot end them, and what is no text in them,
// such as control characters and bytes that are no UTF-8, is written out as MakePrintable does.
std::string EscapeMarkup(std::string_view inText);

} // namespace SonaroHost
