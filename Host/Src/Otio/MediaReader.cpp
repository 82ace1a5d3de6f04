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
	outMedia.mKind = MediaReference::Kind::eExternal;
	outMedia.mTargetUrl = url.IsNothing() ? std::string() : ReadText(url);
	if (outMedia.mTargetUrl.empty())
	{
		url.Tell(Note::Kind::eGuess, "target_url is empty; treating the media as missing");
		outMedia.mKind = MediaReference::Kind::eMissing;
	}
}

void ReadKind(Cursor const& inReference, MediaReference& outMedia)
{
	switch (ReadSchema(inReference))
	{
	case SchemaKind::eExternalReference:
		ReadTarget(inReference, outMedia);
		break;
	case SchemaKind::eMissingReference:
		TellUnknownKeys(inReference, {}, kMediaKeys);
		outMedia.mKind = MediaReference::Kind::eMissing;
		break;
	case SchemaKind::eGeneratorReference:
		TellUnknownKeys(inReference, {"generator_kind", "parameters"}, kMediaKeys);
		outMedia.mKind = MediaReference::Kind::eGenerator;
		outMedia.mGeneratorKind = ReadLabel(Cursor(inReference, "generator_kind"));
		break;
	case SchemaKind::eImageSequenceReference:
		outMedia.mKind = MediaReference::Kind::eImageSequence;
		break;
	default:
		outMedia.mKind = MediaReference::Kind::eUnknown;
		outMedia.mSchema = GetSchemaLabel(inReference);
		inReference.Tell(Note::Kind::eIgnored, "the media reference has the unknown schema " +
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
	if (!inReference.IsObject())
	{
		inReference.RefuseType("a media reference");
	}
	ReadKind(inReference, media);
	media.mName = ReadLabel(Cursor(inReference, "name"));
	Cursor const range(inReference, "available_range");
	bool const isNeeded = inIsActive && media.mKind == MediaReference::Kind::eExternal;
	media.mAvailableRange = isNeeded ? ReadIfThere(range, ReadRange) : ReadIfUsable(range, ReadRange);
	media.mMetadata = ReadMetadata(inReference);
	return media;
}

} // namespace SonaroHost::Otio
