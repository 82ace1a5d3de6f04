#include "JsonLiterals.h"

#include <algorithm>
#include <limits>

namespace SonaroHost::Otio
{

namespace
{

struct Word
{
	std::string_view mText;
	double mValue;
};

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
// Longer ones before those that they begin with.
constexpr Word kLiterals[] = {{"NaN", kNotANumber}, {"-NaN", kNotANumber}, {"Infinity", kInfinity},
	{"-Infinity", -kInfinity}, {"Inf", kInfinity}, {"-Inf", -kInfinity}};

Word const* FindWord(std::string_view inText)
{
	for (Word const& word : kLiterals)
	{
		if (inText.starts_with(word.mText))
		{
			return &word;
		}
	}
	return nullptr;
}

// The offset just past a string whose opening quote is at inQuote.
std::size_t SkipString(std::string_view inText, std::size_t inQuote)
{
	std::size_t offset = inQuote + 1;
	while (offset < inText.size() && inText[offset] != '"')
	{
		offset += inText[offset] == '\\' ? 2 : 1;
	}
	return offset + 1;
}

} // namespace

std::vector<JsonLiteral> FindLiterals(std::string_view inText)
{
	std::vector<JsonLiteral> literals;
	// Nearly every file ends here.
	if (inText.find("NaN") == std::string_view::npos && inText.find("Inf") == std::string_view::npos)
	{
		return literals;
	}
	std::size_t strings = 0;
	for (std::size_t offset = 0; offset < inText.size();)
	{
		if (inText[offset] == '"')
		{
			++strings;
			offset = SkipString(inText, offset);
		}
		else if (Word const* const word = FindWord(inText.substr(offset)))
		{
			literals.push_back({strings, offset, word->mValue});
			++strings;
			offset += word->mText.size();
		}
		else
		{
			++offset;
		}
	}
	return literals;
}

std::string ReplaceLiterals(std::string_view inText, std::vector<JsonLiteral> const& inLiterals)
{
	std::string text(inText);
	for (JsonLiteral const& literal : inLiterals)
	{
		std::size_t const width = FindWord(inText.substr(literal.mOffset))->mText.size();
		std::fill_n(text.begin() + static_cast<std::ptrdiff_t>(literal.mOffset), width, '-');
		text[literal.mOffset] = '"';
		text[literal.mOffset + width - 1] = '"';
	}
	return text;
}

} // namespace SonaroHost::Otio
