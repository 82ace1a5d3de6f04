#include "JsonValue.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace SonaroHost::Otio
{

namespace
{

void DumpString(std::string_view inText, std::string& ioJson)
{
	constexpr char kHexDigits[] = "0123456789abcdef";
	ioJson += '"';
	for (char const character : inText)
	{
		auto const code = static_cast<unsigned char>(character);
		if (code < 0x20)
		{
			ioJson += "\\u00";
			ioJson += kHexDigits[code / 16];
			ioJson += kHexDigits[code % 16];
			continue;
		}
		if (character == '"' || character == '\\')
		{
			ioJson += '\\';
		}
		ioJson += character;
	}
	ioJson += '"';
}

void DumpNumber(double inNumber, std::string& ioJson)
{
	if (!std::isfinite(inNumber))
	{
		ioJson += "null";
		return;
	}
	std::array<char, 32> digits{};
	auto const end = std::to_chars(digits.data(), digits.data() + digits.size(), inNumber).ptr;
	ioJson.append(digits.data(), end);
}

void Dump(JsonValue const& inValue, std::string_view inLeaveOut, std::string& ioJson)
{
	char separator = 0;
	auto const separate = [&separator, &ioJson](char inOpening)
	{
		ioJson += separator == 0 ? inOpening : separator;
		separator = ',';
	};
	switch (inValue.GetType())
	{
	case JsonValue::Type::kNull:
		ioJson += "null";
		break;
	case JsonValue::Type::kBool:
		ioJson += inValue.GetBool() ? "true" : "false";
		break;
	case JsonValue::Type::kNumber:
		DumpNumber(inValue.GetNumber(), ioJson);
		break;
	case JsonValue::Type::kString:
		DumpString(inValue.GetString(), ioJson);
		break;
	case JsonValue::Type::kArray:
		for (JsonValue const& element : inValue.GetElements())
		{
			separate('[');
			Dump(element, {}, ioJson);
		}
		ioJson += separator == 0 ? "[]" : "]";
		break;
	case JsonValue::Type::kObject:
		for (JsonMember const& member : inValue.GetMembers())
		{
			if (!inLeaveOut.empty() && member.mKey == inLeaveOut)
			{
				continue;
			}
			separate('{');
			DumpString(member.mKey, ioJson);
			ioJson += ':';
			Dump(member.mValue, {}, ioJson);
		}
		ioJson += separator == 0 ? "{}" : "}";
		break;
	}
}

} // namespace

std::span<JsonValue const> JsonValue::GetElements() const
{
	return mType == Type::kArray ? std::span(mElements, mSize) : std::span<JsonValue const>();
}

std::span<JsonMember const> JsonValue::GetMembers() const
{
	return mType == Type::kObject ? std::span(mMembers, mSize) : std::span<JsonMember const>();
}

JsonValue const* JsonValue::Find(std::string_view inKey) const
{
	std::span<JsonMember const> const members = GetMembers();
	auto const found = std::find_if(members.rbegin(), members.rend(),
		[inKey](JsonMember const& inMember) { return inMember.mKey == inKey; });
	return found == members.rend() ? nullptr : &found->mValue;
}

char const* GetTypeName(JsonValue::Type inType)
{
	constexpr char const* kNames[] = {"null", "a boolean", "a number", "a string", "an array", "an object"};
	return kNames[static_cast<std::size_t>(inType)];
}

std::string DumpJson(JsonValue const& inValue, std::string_view inLeaveOut)
{
	std::string json;
	if (!inValue.Is(JsonValue::Type::kNull))
	{
		Dump(inValue, inLeaveOut, json);
	}
	return json == "{}" ? std::string() : json;
}

} // namespace SonaroHost::Otio
