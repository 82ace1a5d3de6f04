#include "SonaroHost/Base/PrintableText.h"

#include "zorvcore/string/StringConversion.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <type_traits>

namespace SonaroHost
{

namespace
{

// Whether a byte of UTF-8 is not the first one of its character.
bool ContinuesCharacter(char inByte)
{
	return (static_cast<unsigned char>(inByte) & 0xc0) == 0x80;
}

struct Character
{
	std::uint32_t mCode = 0;
	// The length in bytes; 0 where the text is no UTF-8.
	std::size_t mLength = 0;
};

// The character at the start of a text that is not empty.
Character Decode(std::string_view inText)
{
	auto const first = static_cast<unsigned char>(inText.front());
	if (first < 0x80)
	{
		return {first, 1};
	}
	std::size_t const length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
	if (first < 0xc2 || first > 0xf4 || inText.size() < length)
	{
		return {};
	}
	std::uint32_t code = first & (0x7fu >> length);
	for (std::size_t i = 1; i < length; ++i)
	{
		if (!ContinuesCharacter(inText[i]))
		{
			return {};
		}
		code = code << 6 | (static_cast<unsigned char>(inText[i]) & 0x3fu);
	}
	constexpr std::uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
	bool const isSurrogate = code >= 0xd800 && code < 0xe000;
	return code < kSmallest[length] || code > 0x10ffff || isSurrogate ? Character{} : Character{code, length};
}

// Controls of terminals (ISO 6429), ends of lines and paragraphs, and the marks that turn the direction of writing
// (Unicode's Bidi_Control).
bool IsControl(std::uint32_t inCode)
{
	return inCode < 0x20 || (inCode >= 0x7f && inCode < 0xa0) || inCode == 0x61c || inCode == 0x200e ||
		   inCode == 0x200f || (inCode >= 0x2028 && inCode <= 0x202e) ||
		   (inCode >= 0x2066 && inCode <= 0x2069);
}

// Those of JSON for all but bytes, so that JSON within a text stays what it is.
void AppendEscape(char inKind, unsigned inDigits, std::uint32_t inCode, std::string& ioText)
{
	constexpr char kHexDigits[] = "0123456789abcdef";
	ioText += '\\';
	ioText += inKind;
	for (unsigned digit = inDigits; digit-- > 0;)
	{
		ioText += kHexDigits[inCode >> (4 * digit) & 0xfu];
	}
}

// Paths of the system, whose own conversions throw where a surrogate is alone.
template <class Text>
std::string ToUTF8(Text const& inText)
{
	if constexpr (std::is_same_v<Text, std::string>)
	{
		return inText;
	}
	else
	{
		return zorvcore::string::UTF16to8(std::u16string(inText.begin(), inText.end()));
	}
}

std::string Escape(std::string_view inText, bool inKeepsLines)
{
	std::string text;
	text.reserve(inText.size());
	while (!inText.empty())
	{
		Character const character = Decode(inText);
		std::size_t const length = character.mLength == 0 ? 1 : character.mLength;
		if (character.mLength == 0)
		{
			AppendEscape('x', 2, static_cast<unsigned char>(inText.front()), text);
		}
		else if (!IsControl(character.mCode) || (inKeepsLines && character.mCode == '\n'))
		{
			text += inText.substr(0, length);
		}
		else if (character.mCode < 0x20)
		{
			AppendEscape('x', 2, character.mCode, text);
		}
		else
		{
			AppendEscape('u', 4, character.mCode, text);
		}
		inText.remove_prefix(length);
	}
	return text;
}

} // namespace

std::string MakePrintable(std::string_view inText)
{
	return Escape(inText, false);
}

std::string MakePrintableLines(std::string_view inText)
{
	return Escape(inText, true);
}

std::string QuoteName(std::string_view inName)
{
	std::string quoted = "\"";
	quoted += MakePrintable(inName);
	return quoted + "\"";
}

std::string GetPathText(std::filesystem::path const& inPath)
{
	return ToUTF8(inPath.native());
}

std::string ToLower(std::string inText)
{
	std::transform(inText.begin(), inText.end(), inText.begin(),
		[](unsigned char inCharacter) { return static_cast<char>(std::tolower(inCharacter)); });
	return inText;
}

std::string GetLowerEnding(std::filesystem::path const& inPath)
{
	return ToLower(GetPathText(inPath.extension()));
}

std::string_view CutText(std::string_view inText, std::size_t inLongest)
{
	std::size_t length = std::min(inText.size(), inLongest);
	while (length > 0 && length < inText.size() && ContinuesCharacter(inText[length]))
	{
		--length;
	}
	return inText.substr(0, length);
}

std::string ShortenMiddle(std::string_view inText, std::size_t inLongest)
{
	constexpr std::string_view kEllipsis = "...";
	if (inText.size() <= inLongest)
	{
		return std::string(inText);
	}
	std::size_t const kept = inLongest - std::min(inLongest, kEllipsis.size());
	std::size_t tail = inText.size() - (kept - kept / 2);
	while (tail < inText.size() && ContinuesCharacter(inText[tail]))
	{
		++tail;
	}
	return std::string(CutText(inText, kept / 2)) + std::string(kEllipsis) + std::string(inText.substr(tail));
}

std::string EscapeMarkup(std::string_view inText)
{
	std::string text;
	for (char const character : MakePrintable(inText))
	{
		switch (character)
		{
		case '&':
			text += "&amp;";
			break;
		case '<':
			text += "&lt;";
			break;
		case '>':
			text += "&gt;";
			break;
		case '"':
			text += "&quot;";
			break;
		case '\'':
			text += "&#39;";
			break;
		default:
			text += character;
		}
	}
	return text;
}

} // namespace SonaroHost
