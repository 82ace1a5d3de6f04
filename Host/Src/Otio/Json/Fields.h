#pragma once

#include "Cursor.h"

#include "SonaroHost/Otio/RationalTime.h"

#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

// Readers of single values. Each throws a Refusal for a value that is not what it has to be, and says so.
namespace SonaroHost::Otio
{

// Knows which members of an object are given again further down.
class RepeatedKeys
{
public:
	explicit RepeatedKeys(JsonValue const& inObject);

	// inMember: one of the object's.
	bool Has(JsonMember const& inMember) const;

private:
	JsonValue const& mObject;
	// Only of large objects, for which asking member by member would take long.
	std::unordered_map<std::string_view, JsonValue const*> mLast;
};

// Notes members that nobody reads, and those that are given more than once. inShared: more known keys.
void TellUnknownKeys(Cursor const& inObject, std::initializer_list<std::string_view> inKnown,
	std::span<std::string_view const> inShared = {});

// The same, of an object that has to have keys. Where one of them is absent and another key is unknown, the object is
// refused at the unknown one, which was probably meant to be it.
void CheckKeys(Cursor const& inObject, std::initializer_list<std::string_view> inNeeded,
	std::initializer_list<std::string_view> inOthers);

// A name or a label: anything but a text is noted and gives an empty one, which nothing gives too.
std::string ReadLabel(Cursor const& inValue);

std::string ReadText(Cursor const& inValue);
// Finite, and within the range.
double ReadNumber(Cursor const& inValue, double inSmallest, double inLargest);
bool ReadBool(Cursor const& inValue);
// A missing value counts as true, and so does any number but 0; a note reports numbers.
bool ReadEnabled(Cursor const& inValue);

RationalTime ReadTime(Cursor const& inValue);
TimeRange ReadRange(Cursor const& inValue);
// A ReadTime that is not negative.
RationalTime ReadDuration(Cursor const& inValue);

// The object's "metadata" as text, without what is read of it.
std::string ReadMetadata(Cursor const& inObject);

// What a reader gives; nothing, and a note, where it refuses, and for nothing.
template <class Reader>
auto ReadIfUsable(Cursor const& inValue, Reader const& inRead) -> std::optional<decltype(inRead(inValue))>
{
	if (inValue.IsNothing())
	{
		return std::nullopt;
	}
	try
	{
		return inRead(inValue);
	}
	catch (Refusal const& refusal)
	{
		inValue.GetFindings().Tell(Note::Kind::kIgnored, refusal.what() + std::string("; ignored"),
			[&refusal] { return refusal.GetPlace(); });
		return std::nullopt;
	}
}

// The same, refusing.
template <class Reader>
auto ReadIfThere(Cursor const& inValue, Reader const& inRead) -> std::optional<decltype(inRead(inValue))>
{
	return inValue.IsNothing() ? std::nullopt : std::optional(inRead(inValue));
}

// A name and what it stands for.
template <class T>
struct Choice
{
	std::string_view mName;
	T mValue;
};

// Refuses a text that is none of the names, and names them all.
template <class T, std::size_t kCount>
T ReadChoice(Cursor const& inValue, std::string const& inName, Choice<T> const (&inChoices)[kCount])
{
	std::string names;
	for (std::size_t i = 0; i < kCount; ++i)
	{
		if (inChoices[i].mName == inName)
		{
			return inChoices[i].mValue;
		}
		names += i == 0 ? "\"" : i + 1 == kCount ? " or \"" : ", \"";
		names += inChoices[i].mName;
		names += '"';
	}
	inValue.Refuse(Quote(inName) + " is not valid; use " + names);
}

// Refuses what is no list; nothing is an empty one. inRead(Cursor) for each element.
template <class Reader>
void ForEach(Cursor const& inList, Reader const& inRead)
{
	if (inList.IsNothing())
	{
		return;
	}
	inList.Require(JsonValue::Type::kArray, "an array");
	for (std::size_t i = 0; i < inList.Get().GetElements().size(); ++i)
	{
		inRead(Cursor(inList, i));
	}
}

} // namespace SonaroHost::Otio
