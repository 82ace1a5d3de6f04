#include "Schema.h"

#include <charconv>
#include <string_view>

namespace SonaroHost::Otio
{

namespace
{

struct KnownSchema
{
	std::string_view mName;
	SchemaKind mKind;
	int mNewestVersion;
	// What an old name became; empty for present names.
	std::string_view mPresentName = {};
};

constexpr KnownSchema kKnownSchemas[] = {
	{"RationalTime", SchemaKind::kRationalTime, 1},
	{"TimeRange", SchemaKind::kTimeRange, 1},
	{"Clip", SchemaKind::kClip, 2},
	{"ExternalReference", SchemaKind::kExternalReference, 1},
	{"Gap", SchemaKind::kGap, 1},
	{"Track", SchemaKind::kTrack, 1},
	{"Stack", SchemaKind::kStack, 1},
	{"Transition", SchemaKind::kTransition, 1},
	{"Marker", SchemaKind::kMarker, 3},
	{"Color", SchemaKind::kColor, 1},
	{"Effect", SchemaKind::kEffect, 1},
	{"TimeEffect", SchemaKind::kEffect, 1},
	{"LinearTimeWarp", SchemaKind::kLinearTimeWarp, 1},
	{"FreezeFrame", SchemaKind::kFreezeFrame, 1},
	{"MissingReference", SchemaKind::kMissingReference, 1},
	{"GeneratorReference", SchemaKind::kGeneratorReference, 1},
	{"ImageSequenceReference", SchemaKind::kImageSequenceReference, 1},
	{"MediaReference", SchemaKind::kMissingReference, 1},
	{"Timeline", SchemaKind::kTimeline, 1},
	{"SerializableCollection", SchemaKind::kCollection, 1},
	{"SerializeableCollection", SchemaKind::kCollection, 1, "SerializableCollection"},
	{"Filler", SchemaKind::kGap, 1, "Gap"},
	{"Sequence", SchemaKind::kTrack, 1, "Track"},
};

constexpr std::string_view kKey = "OTIO_SCHEMA";

KnownSchema const* FindSchema(std::string_view inName)
{
	for (KnownSchema const& schema : kKnownSchemas)
	{
		if (schema.mName == inName)
		{
			return &schema;
		}
	}
	return nullptr;
}

// The name as it is today, with the newest version.
std::string NameNewest(KnownSchema const& inSchema)
{
	std::string_view const name = inSchema.mPresentName.empty() ? inSchema.mName : inSchema.mPresentName;
	return std::string(name) + "." + std::to_string(inSchema.mNewestVersion);
}

// Gives less than 1 for what is no version.
int ParseVersion(std::string_view inDigits)
{
	int version = 0;
	auto const [end, error] = std::from_chars(inDigits.data(), inDigits.data() + inDigits.size(), version);
	return error == std::errc() && end == inDigits.data() + inDigits.size() ? version : 0;
}

} // namespace

SchemaKind ReadSchema(Cursor const& inObject)
{
	JsonValue const* const value = inObject.Get().Find(kKey);
	if (value == nullptr || !value->Is(JsonValue::Type::kString))
	{
		return SchemaKind::kNone;
	}
	std::string_view const label = value->GetString();
	std::size_t const point = label.rfind('.');
	KnownSchema const* const schema = FindSchema(label.substr(0, point));
	if (schema == nullptr)
	{
		return SchemaKind::kUnknown;
	}
	int const version = point == std::string_view::npos ? 0 : ParseVersion(label.substr(point + 1));
	if (version < 1)
	{
		inObject.Tell(Note::Kind::kGuess,
			"the schema " + Quote(label) + " has no version; treating it as " + NameNewest(*schema));
	}
	else if (version > schema->mNewestVersion)
	{
		inObject.Tell(Note::Kind::kGuess,
			"the schema " + Quote(label) + " is newer than supported; treating it as " + NameNewest(*schema));
	}
	else if (!schema->mPresentName.empty())
	{
		inObject.Tell(Note::Kind::kRemark, std::string(schema->mName) + " is the old name of " +
											   std::string(schema->mPresentName) + "; treating it as such");
	}
	return schema->mKind;
}

std::string GetSchemaLabel(Cursor const& inObject)
{
	JsonValue const* const value = inObject.Get().Find(kKey);
	bool const isThere = value != nullptr && value->Is(JsonValue::Type::kString);
	return isThere ? std::string(value->GetString()) : std::string();
}

} // namespace SonaroHost::Otio
