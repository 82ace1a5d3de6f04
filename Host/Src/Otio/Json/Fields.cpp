#include "Fields.h"

#include "Schema.h"

#include "SonaroHost/Otio/Limits.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace SonaroHost::Otio
{

namespace
{

constexpr std::string_view kSchemaKey = "OTIO_SCHEMA";

// Refuses what is no object of the schema, or of none.
void CheckObject(Cursor const& inValue, SchemaKind inKind, char const* inName)
{
	inValue.Require(JsonValue::Type::kObject, std::string("a ") + inName);
	SchemaKind const kind = ReadSchema(inValue);
	if (kind == SchemaKind::kNone)
	{
		inValue.Tell(Note::Kind::kGuess, std::string("OTIO_SCHEMA is missing; assuming ") + inName);
	}
	else if (kind != inKind)
	{
		inValue.Refuse("has the schema " + Quote(GetSchemaLabel(inValue)) + "; expected a " + inName);
	}
}

} // namespace

RepeatedKeys::RepeatedKeys(JsonValue const& inObject)
	: mObject(inObject)
{
	constexpr std::size_t kLarge = 64;
	std::span<JsonMember const> const members = inObject.GetMembers();
	if (members.size() <= kLarge)
	{
		return;
	}
	for (JsonMember const& member : members)
	{
		mLast[member.mKey] = &member.mValue;
	}
}

bool RepeatedKeys::Has(JsonMember const& inMember) const
{
	if (!mLast.empty())
	{
		return &inMember.mValue != mLast.at(inMember.mKey);
	}
	JsonMember const* const end = mObject.GetMembers().data() + mObject.GetMembers().size();
	return std::any_of(
		&inMember + 1, end, [&inMember](JsonMember const& inLater) { return inLater.mKey == inMember.mKey; });
}

void TellUnknownKeys(Cursor const& inObject, std::initializer_list<std::string_view> inKnown,
	std::span<std::string_view const> inShared)
{
	auto const isIn = [](auto const& inKeys, std::string_view inKey)
	{ return std::ranges::find(inKeys, inKey) != inKeys.end(); };
	RepeatedKeys const repeated(inObject.Get());
	for (JsonMember const& member : inObject.Get().GetMembers())
	{
		if (member.mKey == kSchemaKey)
		{
			continue;
		}
		if (!isIn(inKnown, member.mKey) && !isIn(inShared, member.mKey))
		{
			Cursor(inObject, member).Tell(Note::Kind::kIgnored, "unknown key");
		}
		else if (repeated.Has(member))
		{
			Cursor(inObject, member)
				.Tell(Note::Kind::kGuess, "the key appears more than once; the last value is used");
		}
	}
}

void CheckKeys(Cursor const& inObject, std::initializer_list<std::string_view> inNeeded,
	std::initializer_list<std::string_view> inOthers)
{
	std::vector<std::string_view> const others(inOthers);
	TellUnknownKeys(inObject, inNeeded, others);
	auto const isUnknown = [&](JsonMember const& inMember)
	{
		return inMember.mKey != kSchemaKey && std::ranges::find(inNeeded, inMember.mKey) == inNeeded.end() &&
			   std::ranges::find(others, inMember.mKey) == others.end();
	};
	auto const absent = std::ranges::find_if(
		inNeeded, [&inObject](std::string_view inKey) { return inObject.Get().Find(inKey) == nullptr; });
	std::span<JsonMember const> const members = inObject.Get().GetMembers();
	auto const unknown = std::ranges::find_if(members, isUnknown);
	if (absent != inNeeded.end() && unknown != members.end())
	{
		Cursor(inObject, *unknown)
			.Refuse("unknown key, while \"" + std::string(*absent) + "\" is missing; correct it");
	}
}

std::string ReadLabel(Cursor const& inValue)
{
	if (inValue.IsNothing() || inValue.Is(JsonValue::Type::kString))
	{
		return inValue.IsNothing() ? std::string() : std::string(inValue.Get().GetString());
	}
	inValue.Tell(Note::Kind::kRemark, "expected a string, found " +
										  std::string(GetTypeName(inValue.Get().GetType())) +
										  "; treating it as empty");
	return {};
}

std::string ReadText(Cursor const& inValue)
{
	inValue.Require(JsonValue::Type::kString, "a string");
	return std::string(inValue.Get().GetString());
}

double ReadNumber(Cursor const& inValue, double inSmallest, double inLargest)
{
	inValue.Require(JsonValue::Type::kNumber, "a number");
	double const number = inValue.Get().GetNumber();
	if (!std::isfinite(number))
	{
		inValue.Refuse(Write(number) + " is not a finite number");
	}
	if (number < inSmallest || number > inLargest)
	{
		bool const isOpen = inSmallest == std::numeric_limits<double>::lowest();
		inValue.Refuse(Write(number) + " is out of range; use " +
					   (isOpen ? "at most " : Write(inSmallest) + " to ") + Write(inLargest));
	}
	return number;
}

bool ReadBool(Cursor const& inValue)
{
	inValue.Require(JsonValue::Type::kBool, "true or false");
	return inValue.Get().GetBool();
}

bool ReadEnabled(Cursor const& inValue)
{
	if (inValue.IsNothing())
	{
		return true;
	}
	if (inValue.Is(JsonValue::Type::kNumber))
	{
		bool const isEnabled = inValue.Get().GetNumber() != 0.0;
		inValue.Tell(Note::Kind::kGuess,
			std::string("\"enabled\" is a number; treating it as ") + (isEnabled ? "true" : "false"));
		return isEnabled;
	}
	return ReadBool(inValue);
}

RationalTime ReadTime(Cursor const& inValue)
{
	CheckObject(inValue, SchemaKind::kRationalTime, "RationalTime");
	TellUnknownKeys(inValue, {"value", "rate"});
	constexpr double kAny = std::numeric_limits<double>::max();
	RationalTime time;
	time.mRate = ReadNumber(Cursor(inValue, "rate"), kMinRate, kMaxRate);
	Cursor const value(inValue, "value");
	time.mValue = ReadNumber(value, -kAny, kAny);
	if (std::abs(time.mValue) > kMaxSeconds * time.mRate)
	{
		value.Refuse(Write(time.mValue) + " at a rate of " + Write(time.mRate) +
					 " is out of range; times are limited to " + Write(kMaxSeconds) + " seconds");
	}
	return time;
}

RationalTime ReadDuration(Cursor const& inValue)
{
	RationalTime const duration = ReadTime(inValue);
	if (duration.mValue < 0.0)
	{
		Cursor(inValue, "value").Refuse(Write(duration.mValue) + " is negative; use 0 or more");
	}
	return duration;
}

TimeRange ReadRange(Cursor const& inValue)
{
	CheckObject(inValue, SchemaKind::kTimeRange, "TimeRange");
	TellUnknownKeys(inValue, {"start_time", "duration"});
	TimeRange range;
	range.mDuration = ReadDuration(Cursor(inValue, "duration"));
	Cursor const start(inValue, "start_time");
	if (start.IsNothing())
	{
		inValue.Tell(Note::Kind::kGuess, "start_time is missing; assuming 0");
		range.mStartTime.mRate = range.mDuration.mRate;
		return range;
	}
	range.mStartTime = ReadTime(start);
	return range;
}

std::string ReadMetadata(Cursor const& inObject)
{
	Cursor const metadata(inObject, "metadata");
	if (!metadata.IsNothing() && !metadata.IsObject())
	{
		metadata.Tell(Note::Kind::kIgnored, "metadata is not an object; ignored");
		return {};
	}
	return DumpJson(metadata.Get(), "sonaro");
}

} // namespace SonaroHost::Otio
