#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace SonaroHost::Otio
{

// A number that JSON has no word for and programs write all the same.
struct JsonLiteral
{
	// Where it stands among the strings of the document, keys among them, from 0.
	std::size_t mString = 0;
	// The offset of its first byte.
	std::size_t mOffset = 0;
	double mValue = 0.0;
};

// Finds NaN, Infinity and Inf, with or without a minus sign, outside of strings.
std::vector<JsonLiteral> FindLiterals(std::string_view inText);

// The text with a string of the same width in the place of each literal, so that it is plain JSON and
// every other byte stays where it was. Which strings are stand-ins is known by their number.
std::string ReplaceLiterals(std::string_view inText, std::vector<JsonLiteral> const& inLiterals);

} // namespace SonaroHost::Otio
