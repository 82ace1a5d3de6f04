#include "MediaReader.h"

#include "Otio/Json/Fields.h"
#include "Otio/Json/Schema.h"

#include <utility>

namespace SonaroHost::Otio
{

namespace
{

constexpr std::string_view kMediaKeys[] = {"name", "metadata", "available_range", "available_image_bounds"};

void ReadTarget(Cursor const& inReference, MediaReference& outMedia)
{
	TellUnknownKeys(inReference, {"target_url"}, kMediaKeys);
	Cursor const url(inReference, "target_url");
	outMedia.mKind = MediaReference::Kind::kExternal;
	outMedia.mTargetUrl = url.IsNothing() ? std::string() : ReadText(url);
	if (outMedia.mTargetUrl.empty())
	{
		url.Tell(Note::Kind::kGuess, "target_url is empty; treating the media as missing");
		outMedia.mKind = MediaReference::Kind::kMissing;
	}
}

void ReadKind(Cursor const& inReference, MediaReference& outMedia)
{
	switch (ReadSchema(inReference))
	{
	case SchemaKind::kExternalReference:
		ReadTarget(inReference, outMedia);
		break;
	case SchemaKind::kMissingReference:
		TellUnknownKeys(inReference, {}, kMediaKeys);
		outMedia.mKind = MediaReference::Kind::kMissing;
		break;
	case SchemaKind::kGeneratorReference:
		TellUnknownKeys(inReference, {"generator_kind", "parameters"}, kMediaKeys);
		outMedia.mKind = MediaReference::Kind::kGenerator;
		outMedia.mGeneratorKind = ReadLabel(Cursor(inReference, "generator_kind"));
		break;
	case SchemaKind::kImageSequenceReference:
		outMedia.mKind = MediaReference::Kind::kImageSequence;
		break;
	default:
		outMedia.mKind = MediaReference::Kind::kUnknown;
		outMedia.mSchema = GetSchemaLabel(inReference);
		inReference.Tell(Note::Kind::kIgnored, "the media reference has the unknown schema " +
												   Quote(outMedia.mSchema) +
												   "; treating the media as missing");
		break;
	}
}

} // namespace

MediaReference ReadMedia(Cursor const& inReference, std::string inKey, bool inIsActive)
{
	MediaReference media;
	media.mKey = std::move(inKey);
	media.mPlace = inReference.GetPlace();
	if (inReference.IsNothing())
	{
		return media;
	}
	inReference.Require(JsonValue::Type::kObject, "a media reference");
	ReadKind(inReference, media);
	media.mName = ReadLabel(Cursor(inReference, "name"));
	Cursor const range(inReference, "available_range");
	bool const isNeeded = inIsActive && media.mKind == MediaReference::Kind::kExternal;
	media.mAvailableRange = isNeeded ? ReadIfThere(range, ReadRange) : ReadIfUsable(range, ReadRange);
	media.mMetadata = ReadMetadata(inReference);
	return media;
}

} // namespace SonaroHost::Otio
