#pragma once

#include "Findings.h"
#include "JsonValue.h"

#include "SonaroHost/Otio/Note.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace SonaroHost::Otio
{

// A value of the document, and where it stands. Cursors stand on the stack, each one below the cursor of
// the object or list around it; the place is written only when somebody asks for it.
class Cursor
{
public:
	Cursor(JsonValue const& inRoot, Findings& ioFindings)
		: mValue(&inRoot),
		  mFindings(ioFindings)
	{
	}
	// The member of that name; null where there is none.
	Cursor(Cursor const& inAround, std::string_view inKey)
		: Cursor(inAround, inAround.mValue->Find(inKey), inKey)
	{
	}
	Cursor(Cursor const& inAround, JsonMember const& inMember)
		: Cursor(inAround, &inMember.mValue, inMember.mKey)
	{
	}
	Cursor(Cursor const& inAround, std::size_t inIndex)
		: Cursor(inAround, &inAround.mValue->GetElements()[inIndex], {}, inIndex)
	{
	}
	Cursor(Cursor const&) = delete;
	Cursor& operator=(Cursor const&) = delete;

	JsonValue const& Get() const { return *mValue; }
	bool Is(JsonValue::Type inType) const { return mValue->Is(inType); }
	// Absent or null, which are one to the format.
	bool IsNothing() const { return Is(JsonValue::Type::kNull); }
	bool IsObject() const { return Is(JsonValue::Type::kObject); }

	// The place as a JSON pointer (RFC 6901). A very long one has "..." for its middle.
	std::string GetPlace() const;

	// Throws a Refusal; inWhy goes on after the place.
	[[noreturn]] void Refuse(std::string const& inWhy) const;
	[[noreturn]] void RefuseType(std::string const& inWanted) const;
	// Refuses what is of another type. inWanted: what the message says was expected.
	void Require(JsonValue::Type inType, std::string const& inWanted) const;
	void Tell(Note::Kind inKind, std::string inText) const;
	Findings& GetFindings() const { return mFindings; }

private:
	// inValue: null where there is none.
	Cursor(Cursor const& inAround, JsonValue const* inValue, std::string_view inKey, std::size_t inIndex = 0);

	void AppendPlace(std::string& ioPlace) const;

	JsonValue const* mValue;
	Findings& mFindings;
	Cursor const* mAround = nullptr;
	std::string_view mKey;
	std::size_t mIndex = 0;
};

// A text of the file within a message: in quotes, on one line, shortened when it is long.
std::string Quote(std::string_view inText);

// "0.5", as short as the number allows.
std::string Write(double inNumber);

} // namespace SonaroHost::Otio
