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
	{"RationalTime", SchemaKind::eRationalTime, 1},
	{"TimeRange", SchemaKind::eTimeRange, 1},
	{"Clip", SchemaKind::eClip, 2},
	{"ExternalReference", SchemaKind::eExternalReference, 1},
	{"Gap", SchemaKind::eGap, 1},
	{"Track", SchemaKind::eTrack, 1},
	{"Stack", SchemaKind::eStack, 1},
	{"Transition", SchemaKind::eTransition, 1},
	{"Marker", SchemaKind::eMarker, 3},
	{"Color", SchemaKind::eColor, 1},
	{"Effect", SchemaKind::eEffect, 1},
	{"TimeEffect", SchemaKind::eEffect, 1},
	{"LinearTimeWarp", SchemaKind::eLinearTimeWarp, 1},
	{"FreezeFrame", SchemaKind::eFreezeFrame, 1},
	{"MissingReference", SchemaKind::eMissingReference, 1},
	{"GeneratorReference", SchemaKind::eGeneratorReference, 1},
	{"ImageSequenceReference", SchemaKind::eImageSequenceReference, 1},
	{"MediaReference", SchemaKind::eMissingReference, 1},
	{"Timeline", SchemaKind::eTimeline, 1},
	{"SerializableCollection", SchemaKind::eCollection, 1},
	{"SerializeableCollection", SchemaKind::eCollection, 1, "SerializableCollection"},
	{"Filler", SchemaKind::eGap, 1, "Gap"},
	{"Sequence", SchemaKind::eTrack, 1, "Track"},
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
	if (value == nullptr || !value->Is(JsonValue::Type::eString))
	{
		return SchemaKind::eNone;
	}
	std::string_view const label = value->GetString();
	std::size_t const point = label.rfind('.');
	KnownSchema const* const schema = FindSchema(label.substr(0, point));
	if (schema == nullptr)
	{
		return SchemaKind::eUnknown;
	}
	int const version = point == std::string_view::npos ? 0 : ParseVersion(label.substr(point + 1));
	std::string_view const name = schema->mPresentName.empty() ? schema->mName : schema->mPresentName;
	auto const newest = std::string(name) + "." + std::to_string(schema->mNewestVersion);
	if (version < 1)
	{
		inObject.Tell(
			Note::Kind::eGuess, "the schema " + Quote(label) + " has no version; treating it as " + newest);
	}
	else if (version > schema->mNewestVersion)
	{
		inObject.Tell(Note::Kind::eGuess,
			"the schema " + Quote(label) + " is newer than supported; treating it as " + newest);
	}
	else if (!schema->mPresentName.empty())
	{
		inObject.Tell(Note::Kind::eRemark, std::string(schema->mName) + " is the old name of " +
											   std::string(schema->mPresentName) + "; treating it as such");
	}
	return schema->mKind;
}

std::string GetSchemaLabel(Cursor const& inObject)
{
	JsonValue const* const value = inObject.Get().Find(kKey);
	bool const isThere = value != nullptr && value->Is(JsonValue::Type::eString);
	return isThere ? std::string(value->GetString()) : std::string();
}

} // namespace SonaroHost::Otio
