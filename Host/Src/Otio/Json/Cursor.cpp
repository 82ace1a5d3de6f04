#include "Cursor.h"

#include "SonaroHost/Base/PrintableText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>

namespace SonaroHost::Otio
{

namespace
{

constexpr JsonValue kNothing{};
constexpr std::size_t kLongestKey = 80;

// Nearly all keys stand in a place as they are.
bool IsPlainKey(std::string_view inKey)
{
	auto const isPlain = [](char inCharacter)
	{
		return (inCharacter >= 'a' && inCharacter <= 'z') || (inCharacter >= 'A' && inCharacter <= 'Z') ||
			   inCharacter == '_';
	};
	return inKey.size() <= kLongestKey && std::ranges::all_of(inKey, isPlain);
}

// As RFC 6901 and a line of text want it, and no longer than kLongestKey.
void AppendKey(std::string_view inKey, std::string& ioPlace)
{
	if (IsPlainKey(inKey))
	{
		ioPlace += inKey;
		return;
	}
	std::string_view const key = CutText(inKey, kLongestKey);
	std::string escaped;
	for (char const character : key)
	{
		escaped += character == '~' ? "~0" : (character == '/' ? "~1" : std::string(1, character));
	}
	ioPlace += MakePrintable(escaped);
	ioPlace += key.size() < inKey.size() ? "..." : "";
}

void AppendIndex(std::size_t inIndex, std::string& ioPlace)
{
	std::array<char, 20> digits{};
	auto const end = std::to_chars(digits.data(), digits.data() + digits.size(), inIndex).ptr;
	ioPlace.append(digits.data(), end);
}

} // namespace

Cursor::Cursor(Cursor const& inAround, JsonValue const* inValue, std::string_view inKey, std::size_t inIndex)
	: mValue(inValue == nullptr ? &kNothing : inValue),
	  mFindings(inAround.mFindings),
	  mAround(&inAround),
	  mKey(inKey),
	  mIndex(inIndex)
{
}

std::string Cursor::GetPlace() const
{
	// What may be nested and is heard has shorter ones.
	constexpr std::size_t kLongest = 2400;
	constexpr std::size_t kKept = 1100;
	std::string place;
	AppendPlace(place);
	if (place.size() <= kLongest)
	{
		// Each part of a document keeps one.
		place.shrink_to_fit();
		return place;
	}
	std::size_t const lastSlash = place.find('/', place.size() - kKept);
	std::size_t const end = lastSlash == std::string::npos ? place.size() : lastSlash;
	return std::string(CutText(place, kKept)) + "..." + place.substr(end);
}

void Cursor::AppendPlace(std::string& ioPlace) const
{
	if (mAround == nullptr)
	{
		return;
	}
	mAround->AppendPlace(ioPlace);
	ioPlace += '/';
	if (mAround->Is(JsonValue::Type::kArray))
	{
		AppendIndex(mIndex, ioPlace);
		return;
	}
	AppendKey(mKey, ioPlace);
}

void Cursor::Refuse(std::string const& inWhy) const
{
	throw Refusal(GetPlace(), inWhy);
}

void Cursor::RefuseType(std::string const& inWanted) const
{
	bool const isEmpty = Is(JsonValue::Type::kArray) && mValue->GetElements().empty();
	bool const isAbsent = mValue == &kNothing;
	Refuse("expected " + inWanted + ", found " +
		   (isAbsent         ? "nothing"
			   : IsNothing() ? "null"
			   : isEmpty     ? "an empty array"
							 : GetTypeName(mValue->GetType())));
}

void Cursor::Require(JsonValue::Type inType, std::string const& inWanted) const
{
	if (!Is(inType))
	{
		RefuseType(inWanted);
	}
}

void Cursor::Tell(Note::Kind inKind, std::string inText) const
{
	mFindings.Tell(inKind, std::move(inText), [this] { return GetPlace(); });
}

std::string Quote(std::string_view inText)
{
	constexpr std::size_t kLongest = 60;
	std::string_view const cut = CutText(inText, kLongest);
	std::string quoted = "'";
	quoted += MakePrintable(cut);
	return quoted + (cut.size() < inText.size() ? "...'" : "'");
}

std::string Write(double inNumber)
{
	if (!std::isfinite(inNumber))
	{
		return std::isnan(inNumber) ? "NaN" : (inNumber < 0.0 ? "-Infinity" : "Infinity");
	}
	constexpr double kLeastPlain = 1.0e-6;
	constexpr double kMostPlain = 1.0e15;
	double const magnitude = std::fabs(inNumber);
	bool const isPlain = magnitude == 0.0 || (magnitude >= kLeastPlain && magnitude < kMostPlain);
	std::array<char, 32> digits{};
	auto const end = std::to_chars(digits.data(), digits.data() + digits.size(), inNumber,
		isPlain ? std::chars_format::fixed : std::chars_format::general)
						 .ptr;
	return {digits.data(), end};
}

} // namespace SonaroHost::Otio
