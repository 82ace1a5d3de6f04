#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace SonaroHost::Otio
{

struct JsonMember;

// A value of a JSON document, 16 bytes. What it points to belongs to a JsonTree.
class JsonValue
{
public:
	enum class Type : std::uint8_t
	{
		kNull,
		kBool,
		// Numbers, not-a-number and the infinite ones among them.
		kNumber,
		kString,
		kArray,
		kObject,
	};

	constexpr JsonValue() = default;
	explicit JsonValue(bool inValue)
		: mType(Type::kBool),
		  mBool(inValue)
	{
	}
	explicit JsonValue(double inValue)
		: mType(Type::kNumber),
		  mNumber(inValue)
	{
	}
	explicit JsonValue(std::string_view inText)
		: mType(Type::kString),
		  mSize(static_cast<std::uint32_t>(inText.size())),
		  mText(inText.data())
	{
	}
	explicit JsonValue(std::span<JsonValue const> inElements)
		: mType(Type::kArray),
		  mSize(static_cast<std::uint32_t>(inElements.size())),
		  mElements(inElements.data())
	{
	}
	explicit JsonValue(std::span<JsonMember const> inMembers)
		: mType(Type::kObject),
		  mSize(static_cast<std::uint32_t>(inMembers.size())),
		  mMembers(inMembers.data())
	{
	}

	Type GetType() const { return mType; }
	bool Is(Type inType) const { return mType == inType; }
	// These only for their types.
	bool GetBool() const { return mBool; }
	double GetNumber() const { return mNumber; }
	std::string_view GetString() const { return {mText, mSize}; }
	// Empty for other types.
	std::span<JsonValue const> GetElements() const;
	std::span<JsonMember const> GetMembers() const;

	// The last member of that name, or null; null also for what is no object.
	JsonValue const* Find(std::string_view inKey) const;

private:
	Type mType = Type::kNull;
	std::uint32_t mSize = 0;
	union
	{
		bool mBool;
		double mNumber;
		char const* mText;
		JsonValue const* mElements;
		JsonMember const* mMembers = nullptr;
	};
};

struct JsonMember
{
	std::string_view mKey;
	JsonValue mValue;
};

// "a text", "a number", "an object": for messages.
char const* GetTypeName(JsonValue::Type inType);

// Compact JSON without the named member of the value itself. Numbers that JSON lacks become null. Empty for null and
// for an object of no other members.
std::string DumpJson(JsonValue const& inValue, std::string_view inLeaveOut);

} // namespace SonaroHost::Otio
