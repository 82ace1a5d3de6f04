#include "zorvcore/string/StringConversion.h"

#include "Support/Common.h"

namespace StringConversionTest
{

using namespace zorvcore::string;
using namespace std::string_view_literals;

TEST(StringConversion, UTF8to16)
{
	struct Case
	{
		char const* mName;
		std::string_view mInput;
		std::u16string_view mExpected;
	};
	constexpr Case kCases[] = {
		{"empty", ""sv, u""sv},
		{"ASCII with a zero", "a\0~\x7F"sv, u"a\0~\x7F"sv},
		{"first and last of two bytes", "\xC2\x80\xDF\xBF"sv, u"\u0080\u07FF"sv},
		{"first and last of three bytes", "\xE0\xA0\x80\xEF\xBF\xBF"sv, u"\u0800\uFFFF"sv},
		{"around the surrogates", "\xED\x9F\xBF\xEE\x80\x80"sv, u"\uD7FF\uE000"sv},
		{"first and last of four bytes", "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"sv, u"\U00010000\U0010FFFF"sv},
		{"a lone following byte", "a\x80z"sv, u"a\uFFFDz"sv},
		{"bytes that start nothing", "\xC0\xC1\xF5\xFF"sv, u"\uFFFD\uFFFD\uFFFD\uFFFD"sv},
		{"overlong slash", "\xC0\xAF"sv, u"\uFFFD\uFFFD"sv},
		{"overlong in three", "\xE0\x9F\xBF"sv, u"\uFFFD\uFFFD\uFFFD"sv},
		{"overlong in four", "\xF0\x8F\xBF\xBF"sv, u"\uFFFD\uFFFD\uFFFD\uFFFD"sv},
		{"a surrogate", "\xED\xA0\x80"sv, u"\uFFFD\uFFFD\uFFFD"sv},
		{"above the last", "\xF4\x90\x80\x80"sv, u"\uFFFD\uFFFD\uFFFD\uFFFD"sv},
		{"cut after one of two", "a\xC3"sv, u"a\uFFFD"sv},
		{"cut after two of three", "\xE2\x82"sv, u"\uFFFD"sv},
		{"cut after three of four", "\xF0\x9F\x8E"sv, u"\uFFFD"sv},
		{"broken off by a letter", "\xF0\x9F\x8E!"sv, u"\uFFFD!"sv},
		{"broken off by a new start", "\xE2\xE2\x82\xAC"sv, u"\uFFFD\u20AC"sv},
	};
	for (Case const& test : kCases)
	{
		SCOPED_TRACE(test.mName);
		EXPECT_EQ(UTF8to16(test.mInput), test.mExpected);
	}
}

TEST(StringConversion, EveryCharacterComesBack)
{
	for (char32_t character = 0; character <= 0x10FFFF; ++character)
	{
		if (character >= 0xD800 && character < 0xE000)
		{
			continue;
		}
		std::u16string text;
		if (character < 0x10000)
		{
			text.push_back(static_cast<char16_t>(character));
		}
		else
		{
			text.push_back(static_cast<char16_t>(0xD7C0 + (character >> 10)));
			text.push_back(static_cast<char16_t>(0xDC00 + (character & 0x3FF)));
		}
		ASSERT_EQ(UTF8to16(UTF16to8(text)), text) << std::hex << static_cast<unsigned>(character);
	}
}

TEST(StringConversion, AsciiToUTF16TakesTheLengthAndReplacesOtherBytes)
{
	EXPECT_EQ(AsciiToUTF16("AudioClipRenderer", 5), u"Audio");
	EXPECT_EQ(AsciiToUTF16("a\0\xC3\xA4", 4), u"a\0\uFFFD\uFFFD"sv);
	EXPECT_EQ(AsciiToUTF16("", 0), u"");
}

} // namespace StringConversionTest
