#include "JsonTree.h"

#include "JsonTreeBuilder.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace SonaroHost::Otio
{

namespace
{

// The offset of the bracket that opens one more level than inMaxDepth.
std::size_t FindTooDeep(std::string_view inText, std::size_t inMaxDepth)
{
	std::size_t depth = 0;
	bool isInString = false;
	for (std::size_t offset = 0; offset < inText.size(); ++offset)
	{
		char const character = inText[offset];
		if (isInString)
		{
			isInString = character != '"';
			offset += character == '\\' ? 1 : 0;
			continue;
		}
		isInString = character == '"';
		bool const opens = character == '{' || character == '[';
		bool const closes = character == '}' || character == ']';
		if (opens && ++depth > inMaxDepth)
		{
			return offset;
		}
		depth -= closes ? 1 : 0;
	}
	return 0;
}

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
	case JsonValue::Type::eNull:
		ioJson += "null";
		break;
	case JsonValue::Type::eBool:
		ioJson += inValue.GetBool() ? "true" : "false";
		break;
	case JsonValue::Type::eNumber:
		DumpNumber(inValue.GetNumber(), ioJson);
		break;
	case JsonValue::Type::eString:
		DumpString(inValue.GetString(), ioJson);
		break;
	case JsonValue::Type::eArray:
		for (JsonValue const& element : inValue.GetElements())
		{
			separate('[');
			Dump(element, {}, ioJson);
		}
		ioJson += separator == 0 ? "[]" : "]";
		break;
	case JsonValue::Type::eObject:
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
	return mType == Type::eArray ? std::span(mElements, mSize) : std::span<JsonValue const>();
}

std::span<JsonMember const> JsonValue::GetMembers() const
{
	return mType == Type::eObject ? std::span(mMembers, mSize) : std::span<JsonMember const>();
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
	constexpr char const* kNames[] = {"null", "true or false", "a number", "a text", "a list", "an object"};
	return kNames[static_cast<std::size_t>(inType)];
}

JsonTree::JsonTree(std::string_view inText, std::size_t inMaxDepth)
{
	std::vector<JsonLiteral> const literals = FindLiterals(inText);
	std::string const replaced = literals.empty() ? std::string() : ReplaceLiterals(inText, literals);
	std::string_view const text = literals.empty() ? inText : replaced;

	JsonTreeBuilder builder(*this, literals, inMaxDepth);
	if (nlohmann::json::sax_parse(text.data(), text.data() + text.size(), &builder))
	{
		return;
	}
	if (builder.IsTooDeep())
	{
		throw JsonError(FindTooDeep(text, inMaxDepth),
			"objects and lists are nested more than " + std::to_string(inMaxDepth) + " deep");
	}
	throw JsonError(builder.GetErrorOffset(), builder.GetError());
}

std::string DumpJson(JsonValue const& inValue, std::string_view inLeaveOut)
{
	std::string json;
	if (!inValue.Is(JsonValue::Type::eNull))
	{
		Dump(inValue, inLeaveOut, json);
	}
	return json == "{}" ? std::string() : json;
}

} // namespace SonaroHost::Otio
