#include "SonaroHost/Otio/Reader.h"

#include "CompositionReader.h"
#include "ItemReader.h"
#include "Otio/Json/Cursor.h"
#include "Otio/Json/Fields.h"
#include "Otio/Json/JsonFile.h"
#include "Otio/Json/Schema.h"
#include "Otio/Mix/MixSettingsReader.h"

#include <string>
#include <utility>

namespace SonaroHost::Otio
{

namespace
{

void ReadTracks(Cursor const& inTimeline, Stack& outTracks)
{
	Cursor const tracks(inTimeline, "tracks");
	if (tracks.IsNothing())
	{
		tracks.Tell(Note::Kind::kGuess, "the timeline has no \"tracks\"; treating it as empty");
		outTracks.mPlace = tracks.GetPlace();
		return;
	}
	if (!tracks.IsObject() || ReadSchema(tracks) != SchemaKind::kStack)
	{
		tracks.Refuse("is not a Stack; \"tracks\" of a timeline must be one");
	}
	ReadStack(tracks, 0, outTracks);
}

void ReadTimeline(Cursor const& inObject, Timeline& outTimeline)
{
	TellUnknownKeys(inObject, {"name", "global_start_time", "tracks", "metadata"});
	outTimeline.mPlace = inObject.GetPlace();
	outTimeline.mName = ReadLabel(Cursor(inObject, "name"));
	outTimeline.mGlobalStartTime = ReadIfUsable(Cursor(inObject, "global_start_time"), ReadTime);
	outTimeline.mMetadata = ReadMetadata(inObject);
	MixSettings settings = ReadMixSettings(Cursor(inObject, "metadata"), SettingsOwner::kTimeline);
	Stack& tracks = outTimeline.mTracks;
	ReadTracks(inObject, tracks);
	tracks.mSettings = ShareSettings(MergeSettings(std::move(settings), tracks.GetSettings(), inObject));
	CheckRouting(tracks.mChildren, tracks.GetSettings().mSubmixes);
}

// A composition that stands for itself, with a timeline put around it.
void Wrap(Cursor const& inObject, SchemaKind inKind, Document& outDocument)
{
	inObject.Tell(
		Note::Kind::kGuess, inKind == SchemaKind::kStack
								? "the file contains a Stack but no Timeline; treating the Stack as one"
								: "the file contains a Track but no Timeline; treating the Track as one");
	Timeline& timeline = outDocument.mTimelines.emplace_back();
	if (inKind == SchemaKind::kStack)
	{
		ReadStack(inObject, 0, timeline.mTracks);
	}
	else
	{
		ReadTrack(inObject, 1, timeline.mTracks.mChildren.emplace_back().mValue.emplace<Track>());
	}
	timeline.mName =
		inKind == SchemaKind::kStack ? timeline.mTracks.mName : timeline.mTracks.mChildren[0].AsItem()->mName;
	CheckRouting(timeline.mTracks.mChildren, timeline.mTracks.GetSettings().mSubmixes);
}

void ReadCollection(Cursor const& inObject, Document& outDocument)
{
	TellUnknownKeys(inObject, {"name", "children", "metadata"});
	ForEach(Cursor(inObject, "children"),
		[&outDocument](Cursor const& inChild)
		{
			SchemaKind const kind = ReadSchema(inChild);
			if (kind == SchemaKind::kTimeline)
			{
				ReadTimeline(inChild, outDocument.mTimelines.emplace_back());
			}
			else if (kind == SchemaKind::kCollection)
			{
				ReadCollection(inChild, outDocument);
			}
			else
			{
				inChild.Tell(
					Note::Kind::kIgnored, "is not a Timeline; only the timelines of a collection are read");
			}
		});
}

void ReadRoot(Cursor const& inRoot, Document& outDocument)
{
	SchemaKind const kind = ReadSchema(inRoot);
	switch (kind)
	{
	case SchemaKind::kTimeline:
		ReadTimeline(inRoot, outDocument.mTimelines.emplace_back());
		break;
	case SchemaKind::kCollection:
		ReadCollection(inRoot, outDocument);
		break;
	case SchemaKind::kStack:
	case SchemaKind::kTrack:
		Wrap(inRoot, kind, outDocument);
		break;
	case SchemaKind::kNone:
		inRoot.Refuse("has no OTIO_SCHEMA, so this is not an OpenTimelineIO file");
	default:
		inRoot.Refuse("has the schema " + Quote(GetSchemaLabel(inRoot)) +
					  "; expected a Timeline, a SerializableCollection, a Stack or a Track");
	}
	if (outDocument.mTimelines.empty())
	{
		inRoot.Refuse("the collection contains no Timeline; there is nothing to render");
	}
}

} // namespace

Document ReadDocument(std::string_view inBytes, std::filesystem::path const& inPath)
{
	Document document;
	document.mNotes = ReadJson(inBytes, inPath, "an OpenTimelineIO file",
		[&document](Cursor const& inRoot) { ReadRoot(inRoot, document); });
	return document;
}

Document ReadDocumentFile(std::filesystem::path const& inPath)
{
	return ReadDocument(ReadBytes(inPath), inPath);
}

} // namespace SonaroHost::Otio
