#include "zorvcore/string/StringConversion.h"

namespace zorvcore::string
{

namespace
{

constexpr char32_t kReplacement = 0xFFFD;

// What a first byte announces: how many bytes follow, its own bits, and the range of the second byte,
// which is narrower where overlong forms, surrogates or values above U+10FFFF would begin.
struct Lead
{
	unsigned mFollowing;
	char32_t mBits;
	unsigned char mSecondMin = 0x80;
	unsigned char mSecondMax = 0xBF;
};

Lead ReadLead(unsigned char inByte)
{
	if (inByte < 0x80)
	{
		return {0, inByte};
	}
	if (inByte >= 0xC2 && inByte <= 0xDF)
	{
		return {1, inByte & 0x1Fu};
	}
	if (inByte >= 0xE0 && inByte <= 0xEF)
	{
		unsigned char const secondMin = inByte == 0xE0 ? 0xA0 : 0x80;
		unsigned char const secondMax = inByte == 0xED ? 0x9F : 0xBF;
		return {2, inByte & 0x0Fu, secondMin, secondMax};
	}
	if (inByte >= 0xF0 && inByte <= 0xF4)
	{
		unsigned char const secondMin = inByte == 0xF0 ? 0x90 : 0x80;
		unsigned char const secondMax = inByte == 0xF4 ? 0x8F : 0xBF;
		return {3, inByte & 0x07u, secondMin, secondMax};
	}
	return {0, kReplacement};
}

// Takes one character, or the ill-formed bytes that one replacement stands for, off the front.
char32_t TakeCharacter(std::string_view& ioText)
{
	Lead const lead = ReadLead(static_cast<unsigned char>(ioText.front()));
	ioText.remove_prefix(1);
	char32_t character = lead.mBits;
	unsigned char minimum = lead.mSecondMin;
	unsigned char maximum = lead.mSecondMax;
	for (unsigned i = 0; i < lead.mFollowing; ++i)
	{
		auto const byte =
			ioText.empty() ? static_cast<unsigned char>(0) : static_cast<unsigned char>(ioText.front());
		if (byte < minimum || byte > maximum)
		{
			return kReplacement;
		}
		ioText.remove_prefix(1);
		character = character << 6 | (byte & 0x3Fu);
		minimum = 0x80;
		maximum = 0xBF;
	}
	return character;
}

void AppendUTF16(char32_t inCharacter, std::u16string& ioText)
{
	if (inCharacter < 0x10000)
	{
		ioText += static_cast<char16_t>(inCharacter);
		return;
	}
	char32_t const offset = inCharacter - 0x10000;
	ioText += static_cast<char16_t>(0xD800 + (offset >> 10));
	ioText += static_cast<char16_t>(0xDC00 + (offset & 0x3FF));
}

void AppendUTF8(char32_t inCharacter, std::string& ioText)
{
	auto const append = [&ioText](char32_t inByte) { ioText += static_cast<char>(inByte); };
	auto const appendFollowing = [&](unsigned inShift) { append(0x80 | ((inCharacter >> inShift) & 0x3F)); };
	if (inCharacter < 0x80)
	{
		append(inCharacter);
	}
	else if (inCharacter < 0x800)
	{
		append(0xC0 | inCharacter >> 6);
		appendFollowing(0);
	}
	else if (inCharacter < 0x10000)
	{
		append(0xE0 | inCharacter >> 12);
		appendFollowing(6);
		appendFollowing(0);
	}
	else
	{
		append(0xF0 | inCharacter >> 18);
		appendFollowing(12);
		appendFollowing(6);
		appendFollowing(0);
	}
}

bool IsHighSurrogate(char16_t inUnit)
{
	return (inUnit & 0xFC00) == 0xD800;
}

bool IsLowSurrogate(char16_t inUnit)
{
	return (inUnit & 0xFC00) == 0xDC00;
}

} // namespace

std::u16string AsciiToUTF16(char const* inText, std::size_t inLength)
{
	std::u16string result;
	result.reserve(inLength);
	for (char const character : std::string_view(inText, inLength))
	{
		auto const byte = static_cast<unsigned char>(character);
		AppendUTF16(byte < 0x80 ? byte : kReplacement, result);
	}
	return result;
}

std::u16string UTF8to16(std::string_view inText)
{
	std::u16string result;
	result.reserve(inText.size());
	while (!inText.empty())
	{
		AppendUTF16(TakeCharacter(inText), result);
	}
	return result;
}

std::string UTF16to8(std::u16string_view inText)
{
	std::string result;
	result.reserve(inText.size());
	for (std::size_t i = 0; i < inText.size(); ++i)
	{
		char16_t const unit = inText[i];
		bool const paired = IsHighSurrogate(unit) && i + 1 < inText.size() && IsLowSurrogate(inText[i + 1]);
		if (paired)
		{
			++i;
			AppendUTF8(0x10000 + ((unit & 0x3FFu) << 10) + (inText[i] & 0x3FFu), result);
		}
		else
		{
			AppendUTF8(IsHighSurrogate(unit) || IsLowSurrogate(unit) ? kReplacement : char32_t{unit}, result);
		}
	}
	return result;
}

} // namespace zorvcore::string
