#include "TextFit.h"

#include "SonaroHost/Base/PrintableText.h"

#include <utf8proc.h>

#include <vector>

namespace SonaroHost
{

namespace
{

constexpr std::string_view kEllipsis = "\u2026";
// Keeps an ellipsis on the left of what is written from right to left.
constexpr std::string_view kRightToLeftMark = "\u200f";
constexpr std::size_t kFewestLetters = 3;

// What one sees as a character: with all its accents and joined signs.
struct Letter
{
	std::size_t mEnd = 0;
	// In ems.
	double mWidth = 0.0;
	bool mIsRightToLeft = false;
};

// Those of DejaVu Sans or above them, which is wider than most.
double GetAsciiWidth(char inCharacter)
{
	constexpr std::string_view kNarrow = "ijlI!|.,:;'\" ()[]{}ftr-/\\";
	constexpr std::string_view kWide = "mwMW@%";
	constexpr double kCapital = 0.79;
	constexpr double kOther = 0.64;
	constexpr std::string_view kBroad = "+=#<>~^&";
	bool const isCapital = inCharacter >= 'A' && inCharacter <= 'Z';
	return kNarrow.find(inCharacter) != std::string_view::npos  ? 0.42
		   : kWide.find(inCharacter) != std::string_view::npos  ? 1.0
		   : kBroad.find(inCharacter) != std::string_view::npos ? 0.84
		   : isCapital                                          ? kCapital
																: kOther;
}

double GetWidth(utf8proc_int32_t inCode)
{
	constexpr utf8proc_int32_t kFirstPictograph = 0x1f000;
	switch (utf8proc_charwidth(inCode))
	{
	case 0:
		return 0.0;
	case 2:
		return inCode >= kFirstPictograph ? 1.35 : 1.0;
	default:
		return inCode < 0x80 ? GetAsciiWidth(static_cast<char>(inCode)) : 0.8;
	}
}

bool IsRightToLeft(utf8proc_int32_t inCode)
{
	auto const direction = utf8proc_get_property(inCode)->bidi_class;
	return direction == UTF8PROC_BIDI_CLASS_R || direction == UTF8PROC_BIDI_CLASS_AL;
}

std::vector<Letter> Split(std::string_view inText)
{
	std::vector<Letter> letters;
	utf8proc_int32_t before = 0;
	utf8proc_int32_t state = 0;
	std::size_t place = 0;
	while (place < inText.size())
	{
		utf8proc_int32_t code = 0;
		auto const length = utf8proc_iterate(reinterpret_cast<utf8proc_uint8_t const*>(inText.data()) + place,
			static_cast<utf8proc_ssize_t>(inText.size() - place), &code);
		if (length <= 0)
		{
			break;
		}
		if (letters.empty() || utf8proc_grapheme_break_stateful(before, code, &state))
		{
			letters.emplace_back();
		}
		place += static_cast<std::size_t>(length);
		letters.back().mEnd = place;
		letters.back().mWidth += GetWidth(code);
		letters.back().mIsRightToLeft = letters.back().mIsRightToLeft || IsRightToLeft(code);
		before = code;
	}
	return letters;
}

double AddWidths(std::vector<Letter> const& inLetters)
{
	double width = 0.0;
	for (Letter const& letter : inLetters)
	{
		width += letter.mWidth;
	}
	return width;
}

} // namespace

double EstimateTextWidth(std::string_view inText, double inSize)
{
	return AddWidths(Split(inText)) * inSize;
}

std::string FitText(std::string_view inText, double inSize, double inWidth)
{
	constexpr double kEllipsisWidth = 1.0;
	std::string const text = MakePrintable(inText);
	std::vector<Letter> const letters = Split(text);
	if (AddWidths(letters) * inSize <= inWidth)
	{
		return text;
	}
	double width = kEllipsisWidth;
	std::size_t count = 0;
	while (count < letters.size() && (width + letters[count].mWidth) * inSize <= inWidth)
	{
		width += letters[count].mWidth;
		++count;
	}
	if (count < kFewestLetters)
	{
		return {};
	}
	std::string cut = text.substr(0, letters[count - 1].mEnd);
	cut.erase(cut.find_last_not_of(' ') + 1);
	cut += kEllipsis;
	cut += letters[count - 1].mIsRightToLeft ? kRightToLeftMark : std::string_view();
	return cut;
}

} // namespace SonaroHost
